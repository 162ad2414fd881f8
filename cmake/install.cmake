# What `cmake --install` puts in place: libraries, public headers, shader sources, documents, the tool, and what
# find_package and pkg-config need to find them. The installed tree may be moved.
include(CMakePackageConfigHelpers)

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/kreiluge)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/kreiluge)

install(TARGETS kreiluge kreiluge_platform EXPORT kreilugeTargets)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform/ DESTINATION ${headers} FILES_MATCHING REGEX "/[A-Z]+_[A-Za-z0-9]+\\.h$")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/RU DESTINATION ${headers} FILES_MATCHING PATTERN "RU_*.h")
set_property(TARGET kreiluge PROPERTY INSTALL_RPATH "$ORIGIN")

install(DIRECTORY ${PROJECT_SOURCE_DIR}/ogl2 DESTINATION ${CMAKE_INSTALL_DATADIR}/kreiluge)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN "*.py" EXCLUDE)

if(TARGET kreiluge_tool)
  install(TARGETS kreiluge_tool)
  file(RELATIVE_PATH to_libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_property(TARGET kreiluge_tool PROPERTY INSTALL_RPATH "$ORIGIN/${to_libraries}")
  install(TARGETS kreiluge_files DESTINATION ${CMAKE_INSTALL_LIBDIR}/kreiluge)
  set_property(TARGET kreiluge_files PROPERTY INSTALL_RPATH "$ORIGIN/..")
endif()

install(EXPORT kreilugeTargets NAMESPACE kreiluge:: DESTINATION ${package})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/kreilugeConfig.cmake.in
  ${PROJECT_BINARY_DIR}/kreilugeConfig.cmake INSTALL_DESTINATION ${package} PATH_VARS CMAKE_INSTALL_DATADIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kreilugeConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kreilugeConfig.cmake ${PROJECT_BINARY_DIR}/kreilugeConfigVersion.cmake
  DESTINATION ${package})

file(RELATIVE_PATH to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/kreiluge.pc.in ${PROJECT_BINARY_DIR}/kreiluge.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kreiluge.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
