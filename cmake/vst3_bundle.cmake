# SPDX-License-Identifier: GPL-3.0-or-later

# quillorea_vst3_bundle(TARGET)
# The folder that VST 3 hosts load: TARGET.vst3 in the build folder, with the library of TARGET and
# what its factory tells of it as JSON. Property VST3_BUNDLE of the target has its path.
function(quillorea_vst3_bundle target)
  set(bundle ${PROJECT_BINARY_DIR}/${target}.vst3)
  set(library ${bundle}/Contents/${CMAKE_SYSTEM_PROCESSOR}-linux/${target}.so)
  set(info ${bundle}/Contents/Resources/moduleinfo.json)
  add_custom_command(OUTPUT ${library} ${info}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${bundle}/Contents/Resources
      ${bundle}/Contents/${CMAKE_SYSTEM_PROCESSOR}-linux
    COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:${target}> ${library}
    COMMAND quillorea-moduleinfo ${library} ${info}
    DEPENDS ${target} quillorea-moduleinfo
    VERBATIM)
  add_custom_target(${target}_vst3 ALL DEPENDS ${library} ${info})
  set_target_properties(${target} PROPERTIES VST3_BUNDLE ${bundle})
endfunction()
