-- SPDX-License-Identifier: GPL-3.0-or-later
-- A session in the folder SESSION with one stereo track, a region of FRAMES silent frames from the
-- start, and Quillorea in front of the fader, loaded as PLUGIN_TYPE. SETTINGS sets parameters by
-- label, or by number where a label is no name: "Rate=0.25;3=1".

local backend = AudioEngine:set_backend("None (Dummy)", "", "")
backend:set_sample_rate(48000)
backend:set_buffer_size(512)
AudioEngine:start(false)
create_session(os.getenv("SESSION"), "render", 48000)

local function find(plugin, wanted)
  for p = 0, plugin:parameter_count() - 1 do
    if plugin:parameter_label(p) == wanted then return p end
  end
  return tonumber(wanted)
end

local tracks = Session:new_audio_track(2, 2, nil, 1, "in", ARDOUR.PresentationInfo.max_order,
                                       ARDOUR.TrackMode.Normal, true)
for route in tracks:iter() do
  local processor = ARDOUR.LuaAPI.new_plugin(Session, "Quillorea",
                                             ARDOUR.PluginType[os.getenv("PLUGIN_TYPE")], "")
  assert(not processor:isnil(), "the plug-in is not there")
  route:add_processor_by_index(processor, 0, nil, true)
  for name, value in string.gmatch(os.getenv("SETTINGS"), "([^=;]+)=([^;]+)") do
    local parameter = find(processor:to_insert():plugin(0), name)
    assert(parameter, "no parameter " .. name)
    assert(ARDOUR.LuaAPI.set_processor_param(processor, parameter, tonumber(value)),
           "cannot set " .. name)
  end
  local track = route:to_track()
  local region = track:bounce_range(0, tonumber(os.getenv("FRAMES")), ARDOUR.InterThreadInfo(),
                                    ARDOUR.LuaAPI.nil_proc(), false, "")
  region:to_audioregion():set_fade_in_active(false)
  region:to_audioregion():set_fade_out_active(false)
  track:playlist():add_region(region, Temporal.timepos_t(0), 1, false, 0, 0, false)
end
-- A VST 3 plug-in learns of its parameters with the next blocks, and what it stores follows them.
ARDOUR.LuaAPI.usleep(500000)
Session:save_state("")
close_session()
