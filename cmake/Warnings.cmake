# lanvane_warnings(target): the warning set every target of this project is built with.
function(lanvane_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2 -Wold-style-cast -Wnon-virtual-dtor)
  if(CMAKE_UNITY_BUILD)
    # A test's fixture stands in an included file then, as in a header.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
  if(LANVANE_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
