# The mobile-broadband classes that Wine lacks.
add_library(nuvelta_wine_fakes STATIC
  fake_account_watcher.cpp
  fake_activation.cpp
  fake_command_channel.cpp
  fake_data_writer.cpp)
target_compile_definitions(nuvelta_wine_fakes PRIVATE _WIN32_WINNT=0x0A00 UNICODE _UNICODE)
target_link_libraries(nuvelta_wine_fakes PUBLIC nuvelta_scenario PRIVATE runtimeobject)
# Nobody calls the export by name, yet it must come out of the archive.
if(MSVC)
  target_link_options(nuvelta_wine_fakes INTERFACE LINKER:/INCLUDE:DllGetActivationFactory)
else()
  target_link_options(nuvelta_wine_fakes INTERFACE LINKER:--undefined=DllGetActivationFactory)
endif()
