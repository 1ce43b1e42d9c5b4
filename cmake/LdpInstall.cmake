# Install rules, the CMake package (find_package(Ldp) -> Ldp::Ldp), the pkg-config
# file ldp.pc and the Debian package (cpack -G DEB). Included last from the top-level
# CMakeLists.txt, once every target exists.
#
# Layout under the prefix:
#   lib/libLdp.so.<version>, libLdp.so.0, libLdp.so
#   include/ldp/<folder>/<Header>.h      the library's headers, as the sources include them
#   include/ldp/<folder>/<Unit>.gen.h    the generated headers they include
#   lib/cmake/Ldp/                       LdpConfig.cmake, LdpConfigVersion.cmake, LdpTargets*.cmake
#   lib/pkgconfig/ldp.pc
#   bin/ldpdump, bin/ldptypes, bin/ldptrace
# The headers sit in a folder of their own so that their generic top-level names
# (core/, model/, platform/, ...) do not land directly in /usr/include.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(LDP_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/ldp)
set(LDP_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/Ldp)

install(TARGETS Ldp EXPORT LdpTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${LDP_INSTALL_INCLUDEDIR})

# Every header of the library's folders, in the layout of the source tree.
file(GLOB_RECURSE LDP_PUBLIC_HEADERS CONFIGURE_DEPENDS RELATIVE ${CMAKE_SOURCE_DIR}
  platform/*.h core/*.h wire/*.h parse/*.h fec/*.h pw/*.h model/*.h)
foreach(header IN LISTS LDP_PUBLIC_HEADERS)
  get_filename_component(dir ${header} DIRECTORY)
  install(FILES ${CMAKE_SOURCE_DIR}/${header} DESTINATION ${LDP_INSTALL_INCLUDEDIR}/${dir})
endforeach()

# The library's generated headers (not the tests' ones), where the headers above
# look for them ("model/LdpConfig.gen.h").
foreach(desc IN LISTS LDP_TYPE_DESCRIPTIONS)
  string(REGEX REPLACE "\\.types$" ".gen.h" header ${desc})
  get_filename_component(dir ${header} DIRECTORY)
  install(FILES ${LDP_GEN_DIR}/${header} DESTINATION ${LDP_INSTALL_INCLUDEDIR}/${dir})
endforeach()

# The command-line tools that this build has; they find the library relative to
# themselves, so an installed tree works from any prefix.
set(LDP_INSTALLED_TOOLS)
foreach(tool ldpdump ldptypes ldptrace)
  if(TARGET ${tool})
    set_target_properties(${tool} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    install(TARGETS ${tool} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    list(APPEND LDP_INSTALLED_TOOLS ${tool})
  endif()
endforeach()

# CMake package.
install(EXPORT LdpTargets NAMESPACE Ldp:: DESTINATION ${LDP_INSTALL_CMAKEDIR})
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/LdpConfig.cmake.in
  ${CMAKE_BINARY_DIR}/LdpConfig.cmake
  INSTALL_DESTINATION ${LDP_INSTALL_CMAKEDIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/LdpConfigVersion.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/LdpConfig.cmake ${CMAKE_BINARY_DIR}/LdpConfigVersion.cmake
  DESTINATION ${LDP_INSTALL_CMAKEDIR})

# pkg-config file, written at install time: the prefix is known only then
# (cmake --install --prefix, or the packaging prefix under CPack).
set(LDP_PC_FILE ${CMAKE_BINARY_DIR}/ldp.pc)
install(CODE "
  set(LDP_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
  set(LDP_PC_LIBDIR \"${CMAKE_INSTALL_LIBDIR}\")
  set(LDP_PC_INCLUDEDIR \"${LDP_INSTALL_INCLUDEDIR}\")
  set(LDP_PC_VERSION \"${PROJECT_VERSION}\")
  configure_file(\"${CMAKE_SOURCE_DIR}/cmake/ldp.pc.in\" \"${LDP_PC_FILE}\" @ONLY)
")
install(FILES ${LDP_PC_FILE} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Debian package: cpack -G DEB in the build directory gives libldp_<version>_<arch>.deb.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libldp)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "libLdp maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "LDP (RFC 5036) protocol types: PDU parsers, wire types and state model")
list(JOIN LDP_INSTALLED_TOOLS ", " LDP_TOOL_NAMES)
set(CPACK_PACKAGE_DESCRIPTION
  "libLdp.so.0 with its C++20 headers, CMake package and pkg-config file; tools: ${LDP_TOOL_NAMES}.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
# CPack finds the shared objects with `file` (Debian package file), then runs
# dpkg-shlibdeps (dpkg-dev) on them; scripts/deps.sh package installs both.
find_program(LDP_FILE_PROGRAM file)
find_program(LDP_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(LDP_FILE_PROGRAM)
  # A shlibs control file, and ldconfig after installing and removing.
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
endif()
if(LDP_FILE_PROGRAM AND LDP_DPKG_SHLIBDEPS)
  # Depends from the libraries the binaries link: libc6, libstdc++6, libgcc-s1 and,
  # for ldpdump, libpcap0.8.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
else()
  # The same, declared: what dpkg-shlibdeps gives for a Debian 12 build.
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6 (>= 2.34), libgcc-s1 (>= 3.0), libstdc++6 (>= 11)")
  if(TARGET ldpdump)
    string(APPEND CPACK_DEBIAN_PACKAGE_DEPENDS ", libpcap0.8 (>= 1.5.1)")
  endif()
endif()
include(CPack)
