# What the shared libraries of the project have in common: how they are linked, versioned and installed.
include(CMakePackageConfigHelpers)

# hdnt_shared_library(TARGET COMPONENT FOLDER header...): the headers, relative to the folder, are the installed ones.
# Each component has an export set of its own, hdnt-COMPONENT, and a pkg-config file made of cmake/TARGET.pc.in.
function(hdnt_shared_library target component folder)
  set(exported ${CMAKE_SOURCE_DIR}/cmake/exported.map)
  # What is process-wide lives as long as the process, so the library does, too: a host that opens and closes it, or a
  # plugin that uses it, has its names and tables once, not once each time.
  target_link_options(${target} PRIVATE -Wl,-Bsymbolic-functions -Wl,-z,nodelete -Wl,--version-script=${exported})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${exported})
  if(NOT HDNT_SANITIZE) # clang leaves sanitizer symbols to programs
    target_link_options(${target} PRIVATE -Wl,--no-undefined)
  endif()
  # Minor versions may break the interface until 1.0.
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} EXPORT_NAME ${component}
                                             SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  foreach(header IN LISTS ARGN)
    cmake_path(GET header PARENT_PATH subfolder)
    install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder}/${subfolder})
  endforeach()
  install(TARGETS ${target} EXPORT hdnt-${component} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(EXPORT hdnt-${component} NAMESPACE hdnt:: FILE hdnt-${component}.cmake
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/hdnt)
  file(RELATIVE_PATH pc_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  string(REPLACE "_" "-" pc_name ${target})
  configure_file(${CMAKE_SOURCE_DIR}/cmake/${pc_name}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${pc_name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${pc_name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

# The package file that find_package(hdnt [COMPONENTS ...]) reads; the component hdnt is always there.
function(hdnt_install_package)
  configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/hdntConfig.cmake.in ${CMAKE_BINARY_DIR}/hdntConfig.cmake
                                INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/hdnt)
  write_basic_package_version_file(${CMAKE_BINARY_DIR}/hdntConfigVersion.cmake COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_BINARY_DIR}/hdntConfig.cmake ${CMAKE_BINARY_DIR}/hdntConfigVersion.cmake
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/hdnt)
endfunction()
