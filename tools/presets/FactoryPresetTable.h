#pragma once
// The factory banks as design data: each row names only what differs from a
// fresh effect. Change a row, run flux-deck-presets, listen, and measure the
// loudness (the hosted preset test prints it); resource/presets/DESIGN.md
// says what each preset is meant to do.
//
// Level: OutputGain (full presets) and OutputPad (tape presets) bring every
// preset to about the same loudness on the demo, so that stepping through a
// bank does not jump.

namespace oxa::factory
{
struct FullPreset
{
    const char* bank;
    const char* name;
    const char* settings;
};

struct TapePreset
{
    const char* name;
    const char* settings;
};

inline const FullPreset fullPresets[] = {
    // --- 01 Classic: the effect's own sounds, tape flange as studios made it.
    {"01 Classic", "Classic Drive",
     "LFOFreq=0.15 MaxRelativeDelay=0.006 Feedback=0.2 Delay=0.006 Drive=10 MagneticHardness=0.7 Hysteresis=0.3 "
     "OutputGain=5.2"},
    {"01 Classic", "Flutter Phase",
     "LFOFreq=0.5 MaxRelativeDelay=0.002 FlutterMod=0.5 FlutterRate=12 WowMod=0.2 WowRate=0.5 OutputGain=-3.5"},
    {"01 Classic", "Jet Tape",
     "LFOFreq=0.08 MaxRelativeDelay=0.012 PhaseInvert=1 Feedback=0.5 Delay=0.003 LFOShape=-0.2 OutputGain=-1.3"},
    {"01 Classic", "Simple Flange", "LFOFreq=0.2 MaxRelativeDelay=0.005 OutputGain=-2.4"},
    {"01 Classic", "Speed Reel",
     "LFOFreq=1.2 MaxRelativeDelay=0.004 WowMod=0.3 WowRate=0.7 NoiseMod=0.3 NoiseRate=2 Speed=1.15 OutputGain=-2.9"},
    {"01 Classic", "Stereo Drive",
     "LFOFreq=0.18 MaxRelativeDelay=0.007 Drive=14 NoiseSync=1 NoiseMod=0.4 NoiseRate=0.5 MagneticHardness=0.5 "
     "OutputGain=-0.4"},

    // --- 02 Guitar
    {"02 Guitar", "Cowboy Flange",
     "LFOFreq=0.25 MaxRelativeDelay=0.004 Delay=0.11 Feedback=0.3 Drive=6 Mix=0.85 OutputGain=-2.6"},
    {"02 Guitar", "Drive and Proud",
     "LFOFreq=0.2 MaxRelativeDelay=0.005 Drive=22 MagneticHardness=0.3 Hysteresis=0.2 Feedback=0.15 OutputGain=6"},
    {"02 Guitar", "Grungy Wobbly",
     "LFOFreq=0.3 MaxRelativeDelay=0.006 Drive=16 WowMod=0.6 WowRate=0.8 NoiseGain=-50 ApplyNoiseGate=0 "
     "DegradeDepth=0.3 DegradeRate=8 OutputGain=-0.6"},
    {"02 Guitar", "Chrome Strum",
     "LFOFreq=0.3 MaxRelativeDelay=0.003 Feedback=0.3 Delay=0.008 TrackWidthRatio=1 MagneticHardness=0.9 "
     "OutputGain=-3.4"},
    {"02 Guitar", "Preamp Rotovibe",
     "LFOFreq=3.5 MaxRelativeDelay=0.0015 LFOShape=-0.3 Drive=8 FlutterMod=0.2 FlutterRate=7 OutputGain=-4"},
    {"02 Guitar", "Slack Bath",
     "LFOFreq=0.12 MaxRelativeDelay=0.005 Speed=0.75 WowMod=0.8 WowRate=0.3 NoiseMod=0.4 NoiseRate=1 Feedback=0.2 "
     "OutputGain=-2.1"},

    // --- 03 Keys
    {"03 Keys", "Another Phase",
     "LFOFreq=0.25 MaxRelativeDelay=0.0015 PhaseInvert=1 Feedback=0.3 Delay=0.002 OutputGain=5"},
    {"03 Keys", "Desolation Flange",
     "LFOFreq=0.05 MaxRelativeDelay=0.009 Feedback=0.55 Delay=0.35 Spacing=0.5 NoiseGain=-55 ApplyNoiseGate=0 "
     "OutputGain=-1.8"},
    {"03 Keys", "Lesser Magnet",
     "LFOFreq=0.12 MaxRelativeDelay=0.002 MagneticHardness=0.3 Hysteresis=0.35 Drive=6 OutputGain=8.6"},
    {"03 Keys", "Melancholy Key",
     "LFOFreq=0.1 MaxRelativeDelay=0.003 WowMod=0.45 WowRate=0.5 Thickness=0.3 Mix=0.8 OutputGain=-1.3"},
    {"03 Keys", "Storm Walker",
     "LFOFreq=0.03 MaxRelativeDelay=0.015 Feedback=0.6 Delay=0.02 NoiseGain=-45 ApplyNoiseGate=0 DegradeDepth=0.2 "
     "DegradeRate=6 OutputGain=-3.2"},
    {"03 Keys", "Twangy",
     "LFOFreq=0.4 MaxRelativeDelay=0.001 Feedback=0.5 Delay=0.002 TrackWidthRatio=1 OutputGain=-6.1"},

    // --- 04 Drums: short depths and moderate feedback keep transients whole.
    {"04 Drums", "A Light Phase", "LFOFreq=0.15 MaxRelativeDelay=0.0015 Mix=0.6 OutputGain=-4.4"},
    {"04 Drums", "Blips and Blops", "LFOFreq=4 MaxRelativeDelay=0.004 LFOShape=0.8 OutputGain=-1.7"},
    {"04 Drums", "Brush Subtle", "LFOFreq=0.1 MaxRelativeDelay=0.001 Mix=0.4 Drive=4 OutputGain=-5.4"},
    {"04 Drums", "Slow Hips",
     "LFOFreq=0.06 MaxRelativeDelay=0.008 LFOSwing=0.5 Feedback=0.3 Delay=0.005 OutputGain=-0.2"},
    {"04 Drums", "Talking Toms",
     "LFOFreq=0.7 MaxRelativeDelay=0.002 Feedback=0.6 Delay=0.004 PhaseInvert=1 OutputGain=4.3"},
    {"04 Drums", "Water Break",
     "LFOFreq=0.9 MaxRelativeDelay=0.003 FlutterMod=0.6 FlutterRate=20 NoiseMod=0.5 NoiseRate=8 OutputGain=-4"},

    // --- 05 Vocal
    {"05 Vocal", "Antique Recording",
     "FlangeMode=0 RelativeDelay=-1 Speed=0.45 Spacing=0.7 Thickness=0.6 Azimuth=0.6 NoiseGain=-32 "
     "ApplyNoiseGate=0 WowMod=0.3 WowRate=0.6 FlutterMod=0.4 FlutterRate=9 DegradeDepth=0.4 DegradeRate=12 Drive=10 "
     "MagneticHardness=0.3 OutputGain=-0.8"},
    {"05 Vocal", "Bright Phase",
     "LFOFreq=0.2 MaxRelativeDelay=0.0012 Feedback=0.2 Delay=0.003 TrackWidthRatio=1 OutputGain=-4.7"},
    {"05 Vocal", "Ghost Words",
     "LFOFreq=0.07 MaxRelativeDelay=0.01 PhaseInvert=1 Delay=0.25 Feedback=0.45 Spacing=0.4 Mix=0.7 OutputGain=-2.2"},
    {"05 Vocal", "Monster",
     "LFOFreq=0.5 MaxRelativeDelay=0.015 WowMod=1 WowRate=1.2 Drive=20 Feedback=0.5 Delay=0.01 OutputGain=-0.1"},
    {"05 Vocal", "Slow Choirs",
     "LFOFreq=0.08 MaxRelativeDelay=0.006 NoiseMod=0.3 NoiseRate=1 NoiseSync=1 Mix=0.7 OutputGain=-1.6"},
    {"05 Vocal", "Wobbly Voices",
     "LFOFreq=0.2 MaxRelativeDelay=0.003 WowMod=0.7 WowRate=1 FlutterMod=0.3 FlutterRate=10 OutputGain=-3.7"},

    // --- 06 Bass: a wider track and less depth keep the low end firm.
    {"06 Bass", "Deep Slow", "LFOFreq=0.04 MaxRelativeDelay=0.01 Feedback=0.2 Mix=0.7 TrackWidthRatio=1 OutputGain=-1.7"},
    {"06 Bass", "Drive To", "LFOFreq=0.15 MaxRelativeDelay=0.003 Drive=18 MagneticHardness=0.4 OutputGain=-1.3"},
    {"06 Bass", "Fuzz My Flange",
     "LFOFreq=0.25 MaxRelativeDelay=0.006 Drive=30 MagneticHardness=0 Feedback=0.4 Delay=0.004 OutputGain=2.7"},
    {"06 Bass", "Gently Whip", "LFOFreq=0.5 MaxRelativeDelay=0.005 LFOShape=-0.8 OutputGain=-3.2"},
    {"06 Bass", "Low Tool",
     "LFOFreq=0.1 MaxRelativeDelay=0.004 Spacing=0.6 Thickness=0.5 Speed=0.8 Drive=8 OutputGain=-3.3"},
    {"06 Bass", "Rhythm Shake", "LFOFreq=2 MaxRelativeDelay=0.002 LFOShape=0.9 PhaseInvert=1 OutputGain=1.4"},
};

inline const TapePreset tapePresets[] = {
    {"00 Flat", "ApplyRecordHead=0 ApplyPlayheadFilter=0 ApplyTransport=0 OutputPad=0.1"},
    {"01 Personnal System",
     "Speed=0.62 WowMod=0.25 WowRate=0.6 FlutterMod=0.2 FlutterRate=12 NoiseGain=-52 Spacing=0.3 Thickness=0.3 "
     "Azimuth=0.3 ApplyCompander=1 NoiseReductionEncoder=3 OutputPad=-2.2"},
    {"02 Destroyed Recorder",
     "Speed=0.5 WowMod=0.7 WowRate=0.9 FlutterMod=0.6 FlutterRate=14 NoiseMod=0.6 NoiseRate=3 DegradeDepth=0.6 "
     "DegradeRate=8 NoiseGain=-36 Spacing=0.8 Azimuth=0.8 MagneticHardness=0.4 Hysteresis=0.3 OutputPad=11.6"},
    {"03 Disintegration",
     "DegradeDepth=0.9 DegradeRate=20 NoiseGain=-40 Spacing=0.6 WowMod=0.3 WowRate=0.4 Hysteresis=0.4 "
     "MagneticHardness=0.3 OutputPad=14.2"},
    {"04 Pico Cassette",
     "Speed=0.3 Spacing=0.6 Thickness=0.5 NoiseGain=-40 FlutterMod=0.5 FlutterRate=25 WowMod=0.3 WowRate=1 "
     "OutputPad=-1.6"},
    {"05 Micro Cassette",
     "Speed=0.4 Spacing=0.5 NoiseGain=-44 FlutterMod=0.4 FlutterRate=18 WowMod=0.25 WowRate=0.8 OutputPad=-1.9"},
    {"06 Cassette Type I",
     "Speed=0.65 Spacing=0.25 Thickness=0.25 NoiseGain=-50 WowMod=0.15 WowRate=0.5 FlutterMod=0.15 FlutterRate=10 "
     "ApplyCompander=1 NoiseReductionEncoder=3 OutputPad=-2.2"},
    {"07 Cassette Type II",
     "Speed=0.65 Spacing=0.15 Thickness=0.15 NoiseGain=-56 MagneticHardness=0.8 WowMod=0.1 WowRate=0.5 "
     "FlutterMod=0.1 FlutterRate=10 ApplyCompander=1 NoiseReductionEncoder=3 OutputPad=-2"},
    {"08 Cassette Type III Trash",
     "Speed=0.6 Spacing=0.45 NoiseGain=-42 WowMod=0.4 WowRate=0.7 FlutterMod=0.35 FlutterRate=11 DegradeDepth=0.3 "
     "MagneticHardness=0.4 ApplyCompander=1 NRLink=0 NoiseReductionEncoder=3 NoiseReductionDecoder=0 OutputPad=-5.2"},
    {"09 Cassette Type IV",
     "Speed=0.68 Spacing=0.1 Thickness=0.1 NoiseGain=-58 MagneticHardness=0.9 WowMod=0.08 WowRate=0.5 "
     "FlutterMod=0.08 FlutterRate=10 ApplyCompander=1 NoiseReductionEncoder=3 OutputPad=-2.3"},
    {"10 Double Cassette Lo-fi",
     "Speed=0.6 Spacing=0.5 Thickness=0.4 Azimuth=0.5 NoiseGain=-45 WowMod=0.3 WowRate=0.6 FlutterMod=0.3 "
     "FlutterRate=12 NoiseMod=0.2 NoiseRate=2 OutputPad=-2.4"},
    {"11 VHS",
     "Speed=0.5 Spacing=0.5 TrackWidthRatio=0.3 Azimuth=0.3 NoiseGain=-46 WowMod=0.2 WowRate=0.4 FlutterMod=0.3 "
     "FlutterRate=30 ApplyCompander=1 NoiseReductionEncoder=3 OutputPad=-0.1"},
    {"12 VHS Archive",
     "Speed=0.45 Spacing=0.65 TrackWidthRatio=0.25 Azimuth=0.55 NoiseGain=-40 WowMod=0.35 WowRate=0.5 "
     "FlutterMod=0.4 FlutterRate=30 DegradeDepth=0.35 DegradeRate=15 ApplyCompander=1 NoiseReductionEncoder=3 "
     "OutputPad=0.8"},
    {"14 Reel-to-Reel",
     "Speed=1 Spacing=0.05 NoiseGain=-62 WowMod=0.05 WowRate=0.3 FlutterMod=0.05 FlutterRate=8 "
     "MagneticHardness=0.7 ApplyCompander=1 NoiseReductionEncoder=1 OutputPad=-2.2"},
    {"15 Lo-fi Magneto",
     "Speed=0.7 Spacing=0.4 Thickness=0.5 NoiseGain=-46 WowMod=0.3 WowRate=0.5 FlutterMod=0.25 FlutterRate=8 "
     "Hysteresis=0.3 MagneticHardness=0.4 OutputPad=8.5"},
    {"16 Studio Multitrack",
     "Speed=1.15 TrackWidthRatio=0.4 NoiseGain=-62 MagneticHardness=0.8 WowMod=0.03 WowRate=0.3 FlutterMod=0.03 "
     "FlutterRate=8 ApplyCompander=1 NoiseReductionEncoder=2 OutputPad=-0.9"},
    {"17 Studio Master",
     "Speed=1.3 TrackWidthRatio=1 NoiseGain=-70 MagneticHardness=1 WowMod=0.02 WowRate=0.3 FlutterMod=0.02 "
     "FlutterRate=8 ApplyCompander=1 NoiseReductionEncoder=2 OutputPad=-3.6"},
    {"18 Studio Vintage",
     "Speed=1 Spacing=0.15 Thickness=0.2 NoiseGain=-58 Hysteresis=0.2 MagneticHardness=0.6 WowMod=0.08 WowRate=0.4 "
     "FlutterMod=0.08 FlutterRate=8 ApplyCompander=1 NoiseReductionEncoder=1 OutputPad=1.9"},
};
} // namespace oxa::factory
