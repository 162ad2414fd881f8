# The tests of the reference host, and those of the command, which a script runs as a person would.
find_package(OpenImageIO QUIET REQUIRED)
find_package(Python3 QUIET REQUIRED COMPONENTS Interpreter)

file(GLOB sources CONFIGURE_DEPENDS host/*.cpp)
add_executable(kreiluge_host_tests ${sources})
kreiluge_test_options(kreiluge_host_tests)
target_include_directories(kreiluge_host_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(kreiluge_host_tests PRIVATE
  kreiluge_host kreiluge_flags OpenImageIO::OpenImageIO GTest::gtest_main)
add_dependencies(kreiluge_host_tests kreiluge_files)
gtest_discover_tests(kreiluge_host_tests DISCOVERY_TIMEOUT 60 PROPERTIES ENVIRONMENT "${quiet}")

add_test(NAME tool COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/host/tool_test.py
  $<TARGET_FILE:kreiluge_tool> ${PROJECT_SOURCE_DIR}/docs/tool.md)
set_tests_properties(tool PROPERTIES TIMEOUT 900 ENVIRONMENT "${quiet}")
