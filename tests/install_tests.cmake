# Installs into the build tree and builds and runs a program against what was installed.
set(installed ${CMAKE_CURRENT_BINARY_DIR}/installed)

add_test(NAME install.clean COMMAND ${CMAKE_COMMAND} -E rm -rf ${installed} ${CMAKE_CURRENT_BINARY_DIR}/consumer)
add_test(NAME install.install COMMAND ${CMAKE_COMMAND} --install ${PROJECT_BINARY_DIR} --prefix ${installed})
add_test(NAME install.consumer
  COMMAND ${CMAKE_CTEST_COMMAND}
    --build-and-test ${CMAKE_CURRENT_SOURCE_DIR}/consumer ${CMAKE_CURRENT_BINARY_DIR}/consumer
    --build-generator ${CMAKE_GENERATOR}
    --build-options -DCMAKE_PREFIX_PATH=${installed} -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}
      -DCMAKE_CXX_FLAGS=${CMAKE_CXX_FLAGS} -DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER}
      -DCMAKE_BUILD_TYPE=${CMAKE_BUILD_TYPE}
    --test-command ${CMAKE_CTEST_COMMAND} --output-on-failure --no-tests=error)
set_tests_properties(install.clean install.install PROPERTIES FIXTURES_SETUP installed)
set_tests_properties(install.install PROPERTIES DEPENDS install.clean)
set_tests_properties(install.consumer PROPERTIES FIXTURES_REQUIRED installed)

if(TARGET kreiluge_told)
  foreach(file ${CMAKE_INSTALL_MANDIR}/man1/kreiluge.1 ${CMAKE_INSTALL_DATADIR}/bash-completion/completions/kreiluge
               ${CMAKE_INSTALL_DATADIR}/zsh/site-functions/_kreiluge ${CMAKE_INSTALL_DOCDIR}/LICENSE)
    add_test(NAME install.${file} COMMAND grep --quiet kreiluge ${installed}/${file})
    set_tests_properties(install.${file} PROPERTIES FIXTURES_REQUIRED installed)
  endforeach()
endif()
if(TARGET kreiluge_tool)
  foreach(page README docs/colour docs/combine docs/filters docs/resample docs/noise docs/roto)
    cmake_path(GET page FILENAME name)
    string(TOLOWER ${name} name)
    add_test(NAME install.${name} COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/readme_shell.sh
      ${PROJECT_SOURCE_DIR}/${page}.md ${installed}/bin ${CMAKE_CURRENT_BINARY_DIR}/${name}
      ${PROJECT_SOURCE_DIR}/docs/images/astronaut.png ${PROJECT_SOURCE_DIR}/docs/astronaut.json)
    set_tests_properties(install.${name} PROPERTIES FIXTURES_REQUIRED installed)
  endforeach()
endif()
