-- Drives Ardour's headless session interpreter (ardour7-lua) through what a user does
-- with Flux Deck in a DAW. Run by tools/run-ardour-check.sh, which sets the environment:
--   FLUXDECK_STEP     "create" (new session, plug-ins on a track, save, export)
--                     or "reopen" (load the saved session, check, export again)
--   FLUXDECK_SESSION  the session folder
--   FLUXDECK_EXPORT   the folder for the exported WAV files
-- Every failure ends the run with "FAILED: ..." on stdout.

local step = os.getenv("FLUXDECK_STEP")
local sessionDir = os.getenv("FLUXDECK_SESSION")
local exportDir = os.getenv("FLUXDECK_EXPORT")
local lv2Uri = "https://oxa.net/plugins/flux-deck"
local wavPreset = "75969a1c-3133-4694-864b-a1fa50e43348" -- Ardour's "WAV @ session-rate"
local rate = 48000
local mixValue = 0.35

local function fail(message)
	print("FAILED: " .. message)
	if Session then close_session() end
	os.exit(1)
end

local function pluginsOf(route)
	local found = {}
	local i = 0
	while true do
		local proc = route:nth_plugin(i)
		if proc:isnil() then break end
		local insert = proc:to_insert()
		found[#found + 1] = { proc = proc, name = proc:name(), kind = ARDOUR.PluginType.name(insert:type()) }
		i = i + 1
	end
	return found
end

local function parameterNamed(proc, name)
	local plugin = proc:to_insert():plugin(0)
	for i = 0, plugin:parameter_count() - 1 do
		if plugin:parameter_label(i) == name then return i end
	end
	return nil
end

local function export(name)
	local ex = Session:simple_export()
	ex:set_name(name)
	ex:set_folder(exportDir)
	ex:set_range(0, 2 * rate)
	if not ex:set_preset(wavPreset) then fail("no WAV export preset") end
	if not ex:check_outputs() then fail("the export has no outputs") end
	if not ex:run_export() then fail("export " .. name .. " failed") end
	print("exported " .. exportDir .. "/" .. name .. ".wav")
end

if not AudioEngine:set_backend("None (Dummy)", "", "") then fail("no Dummy backend") end

if step == "create" then
	if not create_session(sessionDir, "flux-deck", rate) then fail("cannot create a session") end
	local tracks = Session:new_audio_track(2, 2, nil, 1, "Deck", ARDOUR.PresentationInfo.max_order,
	                                       ARDOUR.TrackMode.Normal, true)
	local route = tracks:front():to_route()

	-- A source on the track (noise, broadband like cymbals), then both builds of the effect.
	local source = ARDOUR.LuaAPI.new_luaproc(Session, "ACE Noise")
	local vst3 = ARDOUR.LuaAPI.new_plugin(Session, "Flux Deck", ARDOUR.PluginType.VST3, "")
	local lv2 = ARDOUR.LuaAPI.new_plugin(Session, lv2Uri, ARDOUR.PluginType.LV2, "")
	if source:isnil() then fail("no noise source") end
	if vst3:isnil() then fail("Ardour did not find the VST3 (was the scanner run?)") end
	if lv2:isnil() then fail("Ardour did not find the LV2 <" .. lv2Uri .. ">") end
	for index, proc in ipairs({ source, vst3, lv2 }) do
		if route:add_processor_by_index(proc, index - 1, nil, true) ~= 0 then fail("cannot add " .. proc:name()) end
	end

	local mix = parameterNamed(vst3, "Mix")
	if mix == nil then fail("the VST3 shows no parameter \"Mix\"") end
	ARDOUR.LuaAPI.set_processor_param(vst3, mix, mixValue)

	Session:save_state("", false, false, false, false, false)
	export("created")
elseif step == "reopen" then
	if not load_session(sessionDir, "flux-deck") then fail("cannot reopen the session") end
	local route = Session:route_by_name("Deck")
	if route:isnil() then fail("the track is gone") end

	local kinds = {}
	for _, p in ipairs(pluginsOf(route)) do
		print("plug-in on the track: " .. p.name .. " (" .. p.kind .. ")")
		if p.name == "Flux Deck" then
			kinds[p.kind] = p.proc
		end
	end
	if kinds["VST3"] == nil then fail("the reopened session lost the VST3") end
	if kinds["LV2"] == nil then fail("the reopened session lost the LV2") end

	local mix = parameterNamed(kinds["VST3"], "Mix")
	local value = ARDOUR.LuaAPI.get_processor_param(kinds["VST3"], mix)
	if math.abs(value - mixValue) > 1e-4 then fail("Mix came back as " .. value .. ", not " .. mixValue) end
	print("Mix restored: " .. value)
	export("reopened")
else
	fail("FLUXDECK_STEP must be create or reopen")
end

close_session()
print("OK " .. step)
