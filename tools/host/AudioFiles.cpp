#include "host/AudioFiles.h"

#include <juce_audio_formats/juce_audio_formats.h>

namespace oxa::host
{
namespace
{
// Longer inputs than this are refused rather than filling memory.
constexpr juce::int64 kMaxInputSamples = 48000LL * 60 * 30;
}

juce::String readAudioFile(const juce::File& file, AudioClip& clip)
{
    if (!file.existsAsFile())
        return "no input file \"" + file.getFullPathName() + "\"";

    juce::AudioFormatManager formats;
    formats.registerBasicFormats();
    std::unique_ptr<juce::AudioFormatReader> reader(formats.createReaderFor(file));

    if (reader == nullptr)
        return "\"" + file.getFullPathName() + "\" is not a readable WAV file";

    if (reader->numChannels < 1 || reader->numChannels > 2)
        return "\"" + file.getFullPathName() + "\" has " + juce::String(reader->numChannels)
               + " channels; only mono and stereo are rendered";

    if (reader->lengthInSamples > kMaxInputSamples || reader->sampleRate <= 0.0)
        return "\"" + file.getFullPathName() + "\" is too long or has no sample rate";

    const auto length = (int) reader->lengthInSamples;
    clip.samples.setSize((int) reader->numChannels, length);
    clip.sampleRate = reader->sampleRate;

    if (!reader->read(&clip.samples, 0, length, 0, true, true))
        return "reading \"" + file.getFullPathName() + "\" failed";

    return {};
}

juce::String writeWavFile(const juce::File& file, const AudioClip& clip, int bitsPerSample)
{
    if (bitsPerSample != 24 && bitsPerSample != 32)
        return "only 24-bit and 32-bit float WAV files are written";

    if (file.exists() && !file.deleteFile())
        return "cannot replace \"" + file.getFullPathName() + "\"";

    std::unique_ptr<juce::OutputStream> stream(new juce::FileOutputStream(file));

    if (!static_cast<juce::FileOutputStream*>(stream.get())->openedOk())
        return "cannot write \"" + file.getFullPathName() + "\"";

    juce::WavAudioFormat wav;
    std::unique_ptr<juce::AudioFormatWriter> writer(
        wav.createWriterFor(stream.get(), clip.sampleRate, (unsigned int) clip.samples.getNumChannels(),
                            bitsPerSample, {}, 0));

    if (writer == nullptr)
        return "cannot write a WAV file with these settings";

    stream.release(); // the writer owns the stream now

    if (!writer->writeFromAudioSampleBuffer(clip.samples, 0, clip.samples.getNumSamples()))
        return "writing \"" + file.getFullPathName() + "\" failed";

    return {};
}
} // namespace oxa::host
