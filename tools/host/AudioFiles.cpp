#include "host/AudioFiles.h"

#include <juce_audio_formats/juce_audio_formats.h>

namespace oxa::host
{
namespace
{
// Longer inputs than this are refused rather than filling memory.
constexpr juce::int64 kMaxInputSamples = 48000LL * 60 * 30;
constexpr juce::uint16 kWaveFormatIeeeFloat = 3;

/** Float WAV in the form strict readers expect of a non-PCM format: a WAVEFORMATEX "fmt "
    chunk of 18 bytes (its extension size, 0, included) and a "fact" chunk with the frame
    count. JUCE's writer gives float the extensible header, which some readers warn about. */
juce::String writeFloatWav(juce::OutputStream& out, const AudioClip& clip)
{
    const auto channels = (juce::uint32) clip.samples.getNumChannels();
    const auto frames = (juce::uint64) clip.samples.getNumSamples();
    const auto blockAlign = channels * 4;
    const auto dataBytes = frames * blockAlign;
    const auto riffBytes = 4 + (8 + 18) + (8 + 4) + (8 + dataBytes);

    if (riffBytes > 0xffffffffULL || clip.sampleRate < 1.0 || clip.sampleRate > 4294967295.0)
        return "the output is too long or its rate too high for a WAV file";

    const auto rate = (juce::uint32) std::lround(clip.sampleRate);
    bool ok = out.write("RIFF", 4) && out.writeInt((int) riffBytes) && out.write("WAVE", 4);
    ok = ok && out.write("fmt ", 4) && out.writeInt(18) && out.writeShort((short) kWaveFormatIeeeFloat)
         && out.writeShort((short) channels) && out.writeInt((int) rate) && out.writeInt((int) (rate * blockAlign))
         && out.writeShort((short) blockAlign) && out.writeShort(32) && out.writeShort(0);
    ok = ok && out.write("fact", 4) && out.writeInt(4) && out.writeInt((int) frames);
    ok = ok && out.write("data", 4) && out.writeInt((int) dataBytes);

    for (juce::uint64 frame = 0; ok && frame < frames; ++frame)
        for (juce::uint32 channel = 0; ok && channel < channels; ++channel)
            ok = out.writeFloat(clip.samples.getSample((int) channel, (int) frame));

    return ok ? juce::String() : juce::String("writing the samples failed");
}
} // namespace

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

    if (bitsPerSample == 32)
    {
        auto error = writeFloatWav(*stream, clip);
        stream->flush();
        if (error.isEmpty() && static_cast<juce::FileOutputStream*>(stream.get())->getStatus().failed())
            error = "writing failed";
        if (error.isEmpty())
            return {};
        stream.reset();
        file.deleteFile(); // no half-written file that looks like a result
        return "\"" + file.getFullPathName() + "\": " + error;
    }

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
