# Hardening of release builds; sanitizer builds bring their own checks and do not mix with _FORTIFY_SOURCE.
include(CheckPIESupported)
check_pie_supported()
if(NOT LANVANE_SANITIZER AND NOT LANVANE_BUILD_FUZZERS)
  add_compile_options(
    "$<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3;-fstack-protector-strong;-fstack-clash-protection>")
  add_compile_definitions("$<$<CONFIG:Release,RelWithDebInfo>:_GLIBCXX_ASSERTIONS>")
  add_link_options(-Wl,-z,relro,-z,now)
endif()
