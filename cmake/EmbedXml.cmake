# cmake -DOUTPUT=file.cpp -DINPUTS=a.xml;b.xml -P EmbedXml.cmake: compiles each document in as a zero-terminated array
# under its file name without extension.
set(arrays "")
set(table "")
foreach(input IN LISTS INPUTS)
  get_filename_component(name ${input} NAME_WE)
  file(READ ${input} hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
  string(REGEX REPLACE "(................................................................................)" "\\1\n"
         bytes "${bytes}")
  string(APPEND arrays "const unsigned char ${name}[] = {\n${bytes}0x00};\n")
  string(APPEND table "    {\"${name}\", ${name}, sizeof ${name}},\n")
endforeach()
file(WRITE ${OUTPUT} "#include \"MinimalCorvo/EmbeddedXml.h\"

namespace Corvo {

namespace {

${arrays}
} // namespace

const EmbeddedXml embeddedXmls[] = {
${table}    {nullptr, nullptr, 0}};

} // namespace Corvo
")
