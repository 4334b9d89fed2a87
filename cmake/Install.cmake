# What is installed, by component:
#
#   Runtime        the module and the portable runtime; on Windows the DLL
#   Host           mirolta-host with its manual page, what scripts include, their declarations for editors
#   Development    headers, import library, package files of CMake and pkg-config
#   Documentation  pages, examples, licence
#
# Every file refers to the others by relative paths, so an installation may be moved as a whole.
include(CMakePackageConfigHelpers)

set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/mirolta)
set(packages ${CMAKE_INSTALL_LIBDIR}/cmake/Mirolta)

# Without the namelink the libraries are those that programs load.
set(libraries mirolta)
if(TARGET mirolta_runtime)
  list(APPEND libraries mirolta_runtime)
endif()
install(TARGETS ${libraries} EXPORT MiroltaTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(WIN32)
  install(FILES ${PROJECT_BINARY_DIR}/Mirolta.manifest DESTINATION ${CMAKE_INSTALL_BINDIR}
    COMPONENT Runtime)
endif()

if(TARGET mirolta-host)
  install(TARGETS mirolta-host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Host)
  install(FILES ${PROJECT_SOURCE_DIR}/host/mirolta-host.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Host)
endif()
if(TARGET mirolta-declarations)
  install(FILES ${PROJECT_BINARY_DIR}/share/mirolta/mirolta.d.ts
    DESTINATION ${CMAKE_INSTALL_DATADIR}/mirolta COMPONENT Host)
endif()
install(FILES ${PROJECT_SOURCE_DIR}/lib/bytes.js DESTINATION ${CMAKE_INSTALL_DATADIR}/mirolta
  COMPONENT Host)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT Development FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
install(EXPORT MiroltaTargets NAMESPACE Mirolta:: DESTINATION ${packages} COMPONENT Development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/MiroltaConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/MiroltaConfig.cmake INSTALL_DESTINATION ${packages}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/MiroltaConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/MiroltaConfig.cmake
  ${PROJECT_BINARY_DIR}/package/MiroltaConfigVersion.cmake
  DESTINATION ${packages} COMPONENT Development)

# mirolta_below_prefix(VARIABLE FOLDER): how mirolta.pc names a folder of the installation.
function(mirolta_below_prefix variable folder)
  cmake_path(IS_PREFIX CMAKE_INSTALL_PREFIX ${folder} NORMALIZE is_below)
  if(is_below)
    cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
    set(folder "\${prefix}/${folder}")
  endif()
  set(${variable} "${folder}" PARENT_SCOPE)
endfunction()
mirolta_below_prefix(pc_includedir "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
mirolta_below_prefix(pc_libdir "${CMAKE_INSTALL_FULL_LIBDIR}")
file(RELATIVE_PATH pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_prefix "${pc_prefix}")
if(WIN32)
  set(pc_libraries "-lMirolta -lole32 -loleaut32 -luuid")
else()
  set(pc_libraries "-lMirolta -lmirolta-runtime")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/mirolta.pc.in ${PROJECT_BINARY_DIR}/package/mirolta.pc
  @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/mirolta.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md
  ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/SECURITY.md ${PROJECT_SOURCE_DIR}/THIRD-PARTY.md
  DESTINATION ${documents} COMPONENT Documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${documents}/docs COMPONENT Documentation
  FILES_MATCHING PATTERN "*.md")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${documents}/examples
  COMPONENT Documentation)
