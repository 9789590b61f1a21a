# SPDX-License-Identifier: GPL-3.0-or-later
# What an installation holds, and the Debian package of it: the folders are those in which hosts
# look for plug-ins below /usr.

set(QUILLOREA_DOC_DIR share/doc/quillorea)
# The same library in both places, as a target, since only those are stripped.
install(DIRECTORY $<TARGET_PROPERTY:Quillorea,VST3_BUNDLE> DESTINATION lib/vst3
  PATTERN "*.so" EXCLUDE)
install(TARGETS Quillorea LIBRARY
  DESTINATION lib/vst3/Quillorea.vst3/Contents/${CMAKE_SYSTEM_PROCESSOR}-linux)
install(TARGETS Quillorea LIBRARY DESTINATION lib/vst)
install(TARGETS quillorea-render RUNTIME DESTINATION bin)
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  DESTINATION ${QUILLOREA_DOC_DIR})
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${QUILLOREA_DOC_DIR} RENAME copyright)

# Whoever packs has built: neither is to build the tests first.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillorea)
set(CPACK_PACKAGE_VENDOR Quillorea)
set(CPACK_PACKAGE_CONTACT "Quillorea <nobody@quillorea.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Multi-band chorus as a VST 3 and VST 2 plug-in")
set(CPACK_PACKAGE_DESCRIPTION
  "Up to six bands with a chorus of up to ten voices each, as a plug-in for audio\n"
  "hosts, and quillorea-render, which plays audio files through it.")
list(JOIN CPACK_PACKAGE_DESCRIPTION "" CPACK_PACKAGE_DESCRIPTION)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
include(CPack)
