# A library that only tests use, under the name of the system's.
add_library(wine_hardware SHARED
  adapters.cpp
  answer_hooks.cpp
  clock_hooks.cpp
  control_queue.cpp
  crash.cpp
  fault_hooks.cpp
  import_table.cpp
  library.cpp
  played_story.cpp
  power_queue.cpp
  prefix_hooks.cpp
  runtime_fault_hooks.cpp
  service_hooks.cpp
  stage.cpp
  story_clock.cpp
  story_events.cpp
  thread_hooks.cpp)
set_target_properties(wine_hardware PROPERTIES OUTPUT_NAME iphlpapi PREFIX "")
target_compile_definitions(wine_hardware PRIVATE _WIN32_WINNT=0x0A00 UNICODE _UNICODE)
target_link_libraries(wine_hardware PRIVATE nuvelta_wine_story nuvelta_wine_fakes advapi32)
nuvelta_static(wine_hardware)
# Wine 8's dump writer reads the debug information of what is loaded, and can take for ever.
target_link_options(wine_hardware PRIVATE -Wl,-s)
