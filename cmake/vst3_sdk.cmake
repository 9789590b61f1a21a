# SPDX-License-Identifier: GPL-3.0-or-later
# The VST 3 SDK, used in place from the folder that a package brings it in.
#   vst3_sdk           what a plug-in needs
#   vst3_sdk_hosting   what hosts and tests need besides: streams, presets, host-side objects

set(VST3_SDK_DIR /usr/share/juce/modules/juce_audio_processors/format_types/VST3_SDK
  CACHE PATH "Folder of the VST 3 SDK: pluginterfaces, base, public.sdk")
if(NOT EXISTS ${VST3_SDK_DIR}/public.sdk/source/vst/vstcomponent.h)
  message(FATAL_ERROR "no VST 3 SDK in ${VST3_SDK_DIR}: install juce-modules-source-data "
    "(./dev setup does it), or set VST3_SDK_DIR")
endif()

# vst3_sdk_library(NAME file...)
# Not our code: its warnings are not ours to see.
function(vst3_sdk_library name)
  list(TRANSFORM ARGN PREPEND ${VST3_SDK_DIR}/)
  add_library(${name} STATIC ${ARGN})
  target_include_directories(${name} SYSTEM PUBLIC ${VST3_SDK_DIR})
  target_compile_options(${name} PRIVATE -w)
endfunction()

vst3_sdk_library(vst3_sdk
  base/source/baseiids.cpp
  base/source/fbuffer.cpp
  base/source/fobject.cpp
  base/source/fstreamer.cpp
  base/source/fstring.cpp
  base/source/updatehandler.cpp
  base/thread/source/flock.cpp
  pluginterfaces/base/coreiids.cpp
  pluginterfaces/base/funknown.cpp
  pluginterfaces/base/ustring.cpp
  public.sdk/source/common/pluginview.cpp
  public.sdk/source/vst/vstbus.cpp
  public.sdk/source/vst/vstcomponent.cpp
  public.sdk/source/vst/vstcomponentbase.cpp
  public.sdk/source/vst/vsteditcontroller.cpp
  public.sdk/source/vst/vstinitiids.cpp
  public.sdk/source/vst/vstparameters.cpp)
target_sources(vst3_sdk PRIVATE ${PROJECT_SOURCE_DIR}/src/hosts/vst3/interface_ids.cpp)
# One of its sources needs a header of ours in place of a C header, which tells why.
set_source_files_properties(${VST3_SDK_DIR}/pluginterfaces/base/funknown.cpp PROPERTIES
  COMPILE_DEFINITIONS SMTG_USE_STDATOMIC_H=1
  INCLUDE_DIRECTORIES ${PROJECT_SOURCE_DIR}/src/hosts/vst3/sdk)
# One configuration for every translation unit, whatever the build type: the SDK's debug variant
# counts and prints.
target_compile_definitions(vst3_sdk PUBLIC RELEASE=1)
target_link_libraries(vst3_sdk PUBLIC Threads::Threads)

vst3_sdk_library(vst3_sdk_hosting
  public.sdk/source/common/memorystream.cpp
  public.sdk/source/vst/hosting/hostclasses.cpp
  public.sdk/source/vst/hosting/pluginterfacesupport.cpp
  public.sdk/source/vst/vstpresetfile.cpp)
target_link_libraries(vst3_sdk_hosting PUBLIC vst3_sdk)
