# LANVANE_SANITIZER selects the instrumentation of the whole tree; libFuzzer targets always carry ASan and UBSan.
if(LANVANE_SANITIZER STREQUAL "address" OR LANVANE_BUILD_FUZZERS)
  set(lanvane_sanitize -fsanitize=address,undefined -fno-sanitize-recover=undefined)
  set(lanvane_sanitize_macro __SANITIZE_ADDRESS__)
elseif(LANVANE_SANITIZER STREQUAL "thread")
  set(lanvane_sanitize -fsanitize=thread)
  set(lanvane_sanitize_macro __SANITIZE_THREAD__)
elseif(LANVANE_SANITIZER)
  message(FATAL_ERROR "LANVANE_SANITIZER must be empty, address or thread, not '${LANVANE_SANITIZER}'")
endif()
if(lanvane_sanitize)
  add_compile_options(${lanvane_sanitize} -fno-omit-frame-pointer)
  add_link_options(${lanvane_sanitize})
  add_compile_definitions($<$<CXX_COMPILER_ID:Clang>:${lanvane_sanitize_macro}=1>) # as GCC defines it
  # What sanitizers add hides from GCC 12 what has a value, in its own headers too.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
if(LANVANE_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link -UNDEBUG) # an assertion that an input reaches is a fault
endif()
