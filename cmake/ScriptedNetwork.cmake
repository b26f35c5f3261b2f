# lanvane_scripted_network(target): in this program the system calls of the protocol library can be scripted, see
# tests/support/ScriptedNetwork.h.
function(lanvane_scripted_network target)
  set(source ${PROJECT_SOURCE_DIR}/tests/support/ScriptedNetwork.cpp)
  target_sources(${target} PRIVATE ${source})
  set_source_files_properties(${source} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON) # full of the system's names
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  foreach(call sendmsg recvmsg poll usleep bind getifaddrs freeifaddrs clock_gettime pthread_cond_clockwait
               pthread_cond_signal pthread_create)
    target_link_options(${target} PRIVATE -Wl,--wrap=${call})
  endforeach()
endfunction()
