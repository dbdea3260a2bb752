# What `cmake --install` puts under the prefix, and the Debian package made
# from it by `cpack -G DEB`:
#   bin/                          reachmap, sdftidy
#   lib/reachmap/                 the five static libraries (a folder of their
#                                 own, since names like libtext.a would clash)
#   include/reachmap/<lib>/...    their public headers
#   lib/cmake/reachmap/           the package for find_package(reachmap)
#   share/man/man1/reachmap.1     the manual page
#   share/doc/reachmap/           README.md, examples/convert_all.sh
# Headers that only the project's own sources include stay out.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(REACHMAP_LIBRARIES text runtime geometry gis driver)
set(REACHMAP_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/reachmap)

# Public headers, by library, as the sources include them ("gis/gis.hpp").
set(REACHMAP_HEADERS_text text/text.hpp text/strings.hpp text/numbers.hpp text/freeformat.hpp text/lines.hpp
                          text/extract.hpp text/linebuf.hpp)
set(REACHMAP_HEADERS_runtime
    runtime/runend.hpp runtime/exits.hpp runtime/console.hpp runtime/messages.hpp runtime/paths.hpp
    runtime/platform.hpp runtime/settings.hpp runtime/io_status.hpp runtime/unit_io.hpp runtime/units.hpp
    runtime/readline.hpp runtime/savedate.hpp runtime/extract.hpp)
set(REACHMAP_HEADERS_geometry geometry/arrays.hpp geometry/plane.hpp geometry/polygon.hpp geometry/gridline.hpp
                              geometry/interpolate.hpp geometry/hydraulics.hpp)
set(REACHMAP_HEADERS_gis gis/gis.hpp gis/model/gis_model.hpp gis/model/lazy_array.hpp)
set(REACHMAP_HEADERS_driver driver/run.hpp)

install(TARGETS reachmap sdftidy RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS ${REACHMAP_LIBRARIES} EXPORT reachmapTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}/reachmap)
foreach(lib IN LISTS REACHMAP_LIBRARIES)
  # The headers need C++20; a consumer gets it with the target.
  target_compile_features(${lib} PUBLIC cxx_std_20)
  foreach(header IN LISTS REACHMAP_HEADERS_${lib})
    get_filename_component(dir ${header} DIRECTORY)
    install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/reachmap/${dir})
  endforeach()
endforeach()

install(EXPORT reachmapTargets NAMESPACE reachmap:: DESTINATION ${REACHMAP_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/reachmapConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/reachmapConfig.cmake INSTALL_DESTINATION ${REACHMAP_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/reachmapConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/reachmapConfig.cmake ${PROJECT_BINARY_DIR}/reachmapConfigVersion.cmake
        DESTINATION ${REACHMAP_CMAKE_DIR})

install(FILES ${PROJECT_SOURCE_DIR}/docs/reachmap.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(PROGRAMS ${PROJECT_SOURCE_DIR}/examples/convert_all.sh DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

# The Debian package: everything above, installed under /usr. Its run-time
# dependencies come from dpkg-shlibdeps: only the C and C++ runtime.
set(CPACK_PACKAGE_NAME reachmap)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "the reachmap maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "converts HEC-RAS SDF river geometry to MIF/MID or shapefile layers")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "the reachmap maintainers")
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON)
include(CPack)
