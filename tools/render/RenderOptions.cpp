#include "render/RenderOptions.h"

namespace oxa::render
{
namespace
{
bool parseNumber(const juce::String& text, double low, double high, double& value)
{
    const auto trimmed = text.trim();

    if (trimmed.isEmpty() || !trimmed.containsOnly("0123456789.eE+-"))
        return false;

    value = trimmed.getDoubleValue();
    return std::isfinite(value) && value >= low && value <= high;
}

bool parseWhole(const juce::String& text, int low, int high, int& value)
{
    const auto trimmed = text.trim();

    if (trimmed.isEmpty() || !trimmed.containsOnly("0123456789") || trimmed.length() > 9)
        return false;

    value = trimmed.getIntValue();
    return value >= low && value <= high;
}
} // namespace

juce::String parseRenderOptions(const juce::StringArray& arguments, RenderOptions& options)
{
    for (int i = 0; i < arguments.size(); ++i)
    {
        const auto& option = arguments[i];

        if (option == "-h" || option == "--help")
        {
            options.showHelp = true;
            continue;
        }
        if (option == "--list-parameters")
        {
            options.listParameters = true;
            continue;
        }
        if (option == "--analyze")
        {
            options.analyze = true;
            continue;
        }
        if (option == "--list-presets")
        {
            options.listPresets = true;
            continue;
        }

        static const juce::StringArray takesValue{ "-i", "--input", "-o", "--output", "--bundle", "--sample-rate",
                                                    "--block-size", "--seconds", "--bits", "--set",
                                                    "--spectrogram", "--preset", "--tape-preset" };

        if (!takesValue.contains(option))
            return "unknown option \"" + option + "\"";

        if (i + 1 >= arguments.size())
            return option + " needs a value";

        const auto value = arguments[++i];

        if (option == "-i" || option == "--input")
            options.inputPath = value;
        else if (option == "-o" || option == "--output")
            options.outputPath = value;
        else if (option == "--bundle")
            options.bundlePath = value;
        else if (option == "--preset")
            options.presetName = value;
        else if (option == "--tape-preset")
            options.tapePresetName = value;
        else if (option == "--sample-rate")
        {
            if (!parseNumber(value, 8000.0, 768000.0, options.sampleRate))
                return "--sample-rate takes a rate from 8000 to 768000 Hz, not \"" + value + "\"";
        }
        else if (option == "--block-size")
        {
            if (!parseWhole(value, 1, 65536, options.blockSize))
                return "--block-size takes a whole number from 1 to 65536, not \"" + value + "\"";
        }
        else if (option == "--seconds")
        {
            if (!parseNumber(value, 0.001, 3600.0, options.seconds))
                return "--seconds takes a length from 0.001 to 3600, not \"" + value + "\"";
        }
        else if (option == "--bits")
        {
            if (!parseWhole(value, 24, 32, options.bitsPerSample)
                || (options.bitsPerSample != 24 && options.bitsPerSample != 32))
                return "--bits takes 24 or 32, not \"" + value + "\"";
        }
        else if (option == "--spectrogram")
            options.spectrogramPath = value;
        else if (option == "--set")
        {
            auto setting = host::parseParameterSetting(value);

            if (!setting)
                return "--set takes \"Name=text\", not \"" + value + "\"";

            options.settings.push_back(*setting);
        }
    }

    if (!options.showHelp && !options.listParameters && !options.listPresets && options.outputPath.isEmpty())
        return "an output file is needed (-o out.wav)";

    return {};
}

juce::String renderUsage()
{
    return "usage: flux-deck-render [-i in.wav] -o out.wav [--sample-rate N] [--block-size N]\n"
           "                        [--set \"Name=text\"]... [--list-parameters] [--bundle PATH]\n"
           "                        [--seconds S] [--bits 24|32] [--analyze] [--spectrogram out.png]\n"
           "                        [--preset NAME|FILE] [--tape-preset NAME|FILE] [--list-presets]\n"
           "\n"
           "Renders in.wav (mono or stereo) through the plug-in, or without -i a built-in\n"
           "stereo demo of 6 s. The output is the plug-in's raw output, latency included,\n"
           "followed by one latency's worth of tail; 32-bit float unless --bits 24.\n"
           "  --set \"Name=text\"   write a parameter as its own texts read, in command-line\n"
           "                      order, e.g. --set \"Mix=50%\" --set \"Flange Mode=Manual\"\n"
           "                      --set \"Manual Flange=30%\"; each is printed as read back\n"
           "  --list-parameters   print index, name, value and text of every parameter\n"
           "  --bundle PATH       the .vst3 or .lv2 bundle to load (default: this build's VST3);\n"
           "                      an LV2 shows continuous values as 0 to 1, e.g. \"Mix=0.5\"\n"
           "  --seconds S         length of the demo, or cut/extend the input to S seconds\n"
           "  --analyze           print the output's peak, RMS and loudness against the input's\n"
           "  --spectrogram F     draw input and output spectrograms side by side into F (.png)\n"
           "  --preset P          apply a factory preset (\"Jet Tape\") or a .fxps file first,\n"
           "                      as the editor's preset bar does; --set comes after it\n"
           "  --tape-preset P     the same for a tape preset (\"06 Cassette Type I\")\n"
           "  --list-presets      print the factory presets of both banks\n";
}
} // namespace oxa::render
