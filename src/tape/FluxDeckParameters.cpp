#include "tape/FluxDeckParameters.h"

#include "element/LegacyScales.h"
#include "element/ParameterRegistry.h"
#include "engine/ProcessingElement.h"

namespace oxa
{
namespace
{
enum class Scale
{
    linear,
    log,
    syncLog
};

constexpr int plainNumber = 2, seconds = 3, hertz = 7, hertzOrNote = 8, decibels = 9;

uint32_t addFloat(const char* name, const char* displayName, float min, float max, float defaultValue, int unit,
                  Scale scale = Scale::linear, uint32_t mapperFlags = 0)
{
    ParameterMapper* mapper = nullptr;
    if (scale == Scale::log)
        mapper = new LogMapper(min, max);
    else if (scale == Scale::syncLog)
        mapper = new SyncLogMapper(min, max);
    ParameterDescription<float> description(name, defaultValue, min, max, unit, mapperFlags, mapper, false, false, 32);
    description.displayName = String(displayName);
    return ParameterRegistry::instance().registerFloat(description);
}

// Documents of version 0 stored the resistance on a scale that started at a third.
float hysteresisFromVersion0(float stored)
{
    return (stored * 2.0f + 1.0f) * 0.33333334f;
}

uint32_t addBool(const char* name, const char* displayName, bool defaultValue)
{
    ParameterDescription<bool> description(name, defaultValue);
    description.displayName = String(displayName);
    return ParameterRegistry::instance().registerBool(description);
}

using LabelOf = const char* (*) (int);

uint32_t addList(const char* name, const char* displayName, int count, int defaultValue, LabelOf label)
{
    ParameterDescription<int> description(name, defaultValue, 0, count - 1);
    description.displayName = String(displayName);
    description.formatter = [label](int value, const Element*) {
        const char* text = label(value);
        return text != nullptr ? String(text) : String::fromInt(value);
    };
    description.parser = [label, count](const String& text, const Element*, int& value) {
        for (int i = 0; i < count; ++i)
            if (text == label(i))
            {
                value = i;
                return true;
            }
        const CheckedValue<int> number = text.toInt();
        if (!number || *number < 0 || *number >= count)
            return false;
        value = *number;
        return true;
    };
    return ParameterRegistry::instance().registerInt(description);
}

FluxDeckParameterIds buildTable()
{
    (void) ProcessingElement::syncToHostId(); // the base's ids come first
    FluxDeckParameterIds id{};
    id.fade = addFloat("Fade", "Fade", 0.01f, 0.3f, 0.01f, plainNumber);
    id.maxRelativeDelay = addFloat("MaxRelativeDelay", "Flange Depth", 0.001f, 0.015f, 0.005f, seconds, Scale::log, 7);
    id.relativeDelay = addFloat("RelativeDelay", "Manual Flange", -1.0f, 1.0f, -1.0f, plainNumber);
    id.delay = addFloat("Delay", "Delay", 0.002f, 1.0f, 0.016f, seconds, Scale::log, 7);
    id.phaseInvert = addBool("PhaseInvert", "Phase Invert", false);
    id.magneticHardness = addFloat("MagneticHardness", "Magnetic Hardness", 0.0f, 1.0f, 1.0f, plainNumber);
    id.hysteresis = addFloat("Hysteresis", "Magnetic Resistance", 0.0f, 1.0f, 0.0f, plainNumber);
    LegacyScales::declare("Hysteresis", &hysteresisFromVersion0);
    id.noiseGain = addFloat("NoiseGain", "Noise Gain", -80.0f, -20.0f, -80.0f, decibels);
    id.spacing = addFloat("Spacing", "Spacing", 0.0f, 1.0f, 0.0f, plainNumber);
    id.thickness = addFloat("Thickness", "Thickness", 0.0f, 1.0f, 0.0f, plainNumber);
    id.azimuth = addFloat("Azimuth", "Azimuth", 0.0f, 1.0f, 0.0f, plainNumber);
    id.trackWidthRatio = addFloat("TrackWidthRatio", "Width", 0.0f, 1.0f, 0.8f, plainNumber);
    id.speed = addFloat("Speed", "Tape Speed", 0.0f, 1.3f, 1.0f, plainNumber);
    id.wowMod = addFloat("WowMod", "Wow Depth", 0.0f, 1.0f, 0.0f, plainNumber);
    id.wowRate = addFloat("WowRate", "Wow Rate", 0.1f, 1.5f, 0.1f, hertz, Scale::log);
    id.flutterMod = addFloat("FlutterMod", "Flutter Depth", 0.0f, 1.0f, 0.0f, plainNumber);
    id.flutterRate = addFloat("FlutterRate", "Flutter Rate", 5.0f, 100.0f, 5.0f, hertz, Scale::log);
    id.noiseMod = addFloat("NoiseMod", "Random Depth", 0.0f, 1.0f, 0.0f, plainNumber);
    id.noiseRate = addFloat("NoiseRate", "Random Rate", 0.1f, 100.0f, 10.0f, hertz, Scale::log);
    id.feedback = addFloat("Feedback", "Feedback", 0.0f, 1.0f, 0.0f, plainNumber);
    id.inputGain = addFloat("InputGain", "Input Gain", -40.0f, 40.0f, 0.0f, decibels);
    id.outputGain = addFloat("OutputGain", "Output Gain", -40.0f, 40.0f, 0.0f, decibels);
    id.applyPlayheadFilter = addBool("ApplyPlayheadFilter", "Apply Playback Filter", true);
    id.noiseReductionEncoder = addList("NoiseReductionEncoder", "Noise Reduction Encoder", 4, 0,
                                       &FluxDeckParameters::noiseReductionLabel);
    id.noiseReductionDecoder = addList("NoiseReductionDecoder", "Noise Reduction Decoder", 4, 0,
                                       &FluxDeckParameters::noiseReductionLabel);
    id.flangeMode = addList("FlangeMode", "Flange Mode", 2, 1, &FluxDeckParameters::flangeModeLabel);
    id.lfoFreq = addFloat("LFOFreq", "LFO Rate", 0.01f, 10.0f, 0.1f, hertzOrNote, Scale::syncLog);
    id.lfoPhase = addFloat("LFOPhase", "LFO Phase", -1.0f, 1.0f, 0.0f, plainNumber);
    id.lfoShape = addFloat("LFOShape", "LFO Shape", -0.99f, 0.99f, 0.0f, plainNumber);
    id.lfoSymmetry = addFloat("LFOSymmetry", "LFO Symmetry", -1.0f, 1.0f, 0.0f, plainNumber);
    id.lfoSwing = addFloat("LFOSwing", "LFO Swing", 0.0f, 1.0f, 0.0f, plainNumber);
    id.applyRecordHead = addBool("ApplyRecordHead", "Apply Tape Simulation", true);
    id.applyTransport = addBool("ApplyTransport", "Apply Transport Modulations", true);
    id.drive = addFloat("Drive", "Drive", 0.0f, 40.0f, 0.0f, decibels);
    id.noiseSync = addBool("NoiseSync", "Random Channel Unsync", false);
    id.mix = addFloat("Mix", "Mix", 0.0f, 1.0f, 1.0f, plainNumber);
    id.nrLink = addBool("NRLink", "Link NR Encoder and Decoder", true);
    id.degradeDepth = addFloat("DegradeDepth", "Demagnetization Depth", 0.0f, 1.0f, 0.0f, plainNumber);
    id.degradeRate = addFloat("DegradeRate", "Demagnetization Rate", 5.0f, 50.0f, 10.0f, hertz, Scale::log);
    id.applyNoiseGate = addBool("ApplyNoiseGate", "Apply Noise Gate", true);
    id.applyCompander = addBool("ApplyCompander", "Apply Compander", false);
    id.applyFeedbackCompensation = addBool("ApplyFeedbackCompensation", "Compensate Feedback", true);
    id.applyLowLatency = addBool("ApplyLowLatency", "Low Latency Mode", false);
    id.outputPad = addFloat("OutputPad", "Output Pad", -15.0f, 15.0f, 0.0f, decibels);

    id.exposedOrder = {id.flangeMode, id.lfoFreq, id.lfoPhase, id.lfoShape, id.lfoSymmetry, id.lfoSwing,
                       id.relativeDelay, id.maxRelativeDelay, id.delay, id.fade, id.phaseInvert, id.applyRecordHead,
                       id.magneticHardness, id.hysteresis, id.noiseGain, id.applyNoiseGate, id.degradeDepth,
                       id.degradeRate, id.applyPlayheadFilter, id.spacing, id.thickness, id.azimuth,
                       id.trackWidthRatio, id.speed, id.applyTransport, id.applyLowLatency, id.wowMod, id.wowRate,
                       id.flutterMod, id.flutterRate, id.noiseSync, id.noiseMod, id.noiseRate,
                       id.applyFeedbackCompensation, id.feedback, id.inputGain, id.drive, id.outputGain, id.mix,
                       id.applyCompander, id.nrLink, id.noiseReductionEncoder, id.noiseReductionDecoder,
                       id.outputPad};
    return id;
}
} // namespace

namespace FluxDeckParameters
{
const FluxDeckParameterIds& ids()
{
    static const FluxDeckParameterIds table = buildTable();
    return table;
}

const char* noiseReductionLabel(int type)
{
    static const char* const labels[] = {"None", "Basic PreEmphasis", "Type A", "Type B"};
    return type >= 0 && type < 4 ? labels[type] : nullptr;
}

const char* flangeModeLabel(int mode)
{
    static const char* const labels[] = {"Manual", "LFO"};
    return mode >= 0 && mode < 2 ? labels[mode] : nullptr;
}
} // namespace FluxDeckParameters
} // namespace oxa
