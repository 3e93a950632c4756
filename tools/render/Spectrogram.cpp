#include "render/Spectrogram.h"

#include <complex>
#include <iterator>
#include <vector>

namespace oxa::render
{
namespace
{
constexpr int kFftOrder = 12; // 4096 points: 11.7 Hz apart at 48 kHz, enough for the low octaves
constexpr int kFftSize = 1 << kFftOrder;
constexpr double kLowestHz = 20.0;
constexpr float kFloorDb = -120.0f;
constexpr float kCeilingDb = 0.0f;

const juce::Colour kBackground(0xff16181c);
const juce::Colour kText(0xffe8e8e8);
const juce::Colour kGrid(0x40ffffff);

/** In-place radix-2 transform; the size is a power of two. */
void fft(std::vector<std::complex<double>>& data)
{
    const auto n = data.size();

    for (size_t i = 1, j = 0; i < n; ++i)
    {
        auto bit = n >> 1;
        for (; (j & bit) != 0; bit >>= 1)
            j ^= bit;
        j |= bit;
        if (i < j)
            std::swap(data[i], data[j]);
    }

    for (size_t length = 2; length <= n; length <<= 1)
    {
        const auto angle = -2.0 * juce::MathConstants<double>::pi / (double) length;
        const std::complex<double> step(std::cos(angle), std::sin(angle));

        for (size_t start = 0; start < n; start += length)
        {
            std::complex<double> w(1.0, 0.0);
            for (size_t k = 0; k < length / 2; ++k, w *= step)
            {
                const auto even = data[start + k];
                const auto odd = data[start + k + length / 2] * w;
                data[start + k] = even + odd;
                data[start + k + length / 2] = even - odd;
            }
        }
    }
}

std::vector<float> mid(const juce::AudioBuffer<float>& audio)
{
    std::vector<float> out((size_t) audio.getNumSamples(), 0.0f);
    const auto channels = audio.getNumChannels();

    for (int channel = 0; channel < channels; ++channel)
        for (int i = 0; i < audio.getNumSamples(); ++i)
            out[(size_t) i] += audio.getSample(channel, i) / (float) channels;

    return out;
}

/** Levels in dBFS of a sine's peak: one column a pixel, one row a pixel. */
class SpectrogramColumns
{
public:
    SpectrogramColumns(const std::vector<float>& signal, double rate, int columns, int rows)
        : sampleRate(rate), height(rows)
    {
        levels.resize((size_t) columns * (size_t) rows, kFloorDb);
        std::vector<double> window(kFftSize);
        double windowSum = 0.0;
        for (int i = 0; i < kFftSize; ++i)
            windowSum += window[(size_t) i] = 0.5 - 0.5 * std::cos(2.0 * juce::MathConstants<double>::pi * i / kFftSize);

        std::vector<std::complex<double>> bins(kFftSize);
        std::vector<float> magnitudesDb(kFftSize / 2 + 1);

        for (int column = 0; column < columns; ++column)
        {
            const auto centre = (int) ((column + 0.5) * (double) signal.size() / columns);
            for (int i = 0; i < kFftSize; ++i)
            {
                const auto index = centre - kFftSize / 2 + i;
                const auto x = index >= 0 && index < (int) signal.size() ? signal[(size_t) index] : 0.0f;
                bins[(size_t) i] = { x * window[(size_t) i], 0.0 };
            }
            fft(bins);

            for (size_t k = 0; k < magnitudesDb.size(); ++k)
            {
                const auto amplitude = 2.0 * std::abs(bins[k]) / windowSum;
                magnitudesDb[k] = amplitude > 1e-9 ? (float) (20.0 * std::log10(amplitude)) : kFloorDb;
            }

            for (int row = 0; row < rows; ++row)
                levels[(size_t) column * (size_t) rows + (size_t) row] = levelForRow(magnitudesDb, row);
        }
    }

    float level(int column, int row) const { return levels[(size_t) column * (size_t) height + (size_t) row]; }

    /** Frequency at a pixel row's lower edge; row 0 is the top. */
    double frequencyOfRow(double row) const
    {
        const auto top = sampleRate / 2.0;
        return kLowestHz * std::pow(top / kLowestHz, 1.0 - row / height);
    }

private:
    /** The loudest bin a row covers, so that narrow peaks survive at the top of the axis. */
    float levelForRow(const std::vector<float>& magnitudesDb, int row) const
    {
        const auto binWidth = sampleRate / kFftSize;
        const auto last = (int) magnitudesDb.size() - 1;
        const auto from = juce::jlimit(0, last, (int) std::floor(frequencyOfRow(row + 1) / binWidth));
        const auto to = juce::jlimit(from, last, (int) std::ceil(frequencyOfRow(row) / binWidth));
        auto loudest = kFloorDb;
        for (int k = from; k <= to; ++k)
            loudest = juce::jmax(loudest, magnitudesDb[(size_t) k]);
        return loudest;
    }

    double sampleRate;
    int height;
    std::vector<float> levels;
};

/** Dark blue through violet, red and orange to pale yellow: quiet parts recede, loud ones stand out. */
juce::Colour colourForLevel(float db)
{
    static const juce::Colour stops[] = { juce::Colour(0xff000004), juce::Colour(0xff2c105c), juce::Colour(0xff711f81),
                                          juce::Colour(0xffb63679), juce::Colour(0xffee605e), juce::Colour(0xfffb9b06),
                                          juce::Colour(0xfffcffa4) };
    constexpr int last = (int) std::size(stops) - 1;
    const auto position = juce::jlimit(0.0f, 1.0f, (db - kFloorDb) / (kCeilingDb - kFloorDb)) * last;
    const auto index = juce::jmin(last - 1, (int) position);
    return stops[index].interpolatedWith(stops[index + 1], position - index);
}

void drawPanel(juce::Graphics& g, juce::Rectangle<int> area, const SpectrogramColumns& columns,
               const juce::String& heading, double seconds)
{
    g.setColour(kText);
    g.setFont(18.0f);
    g.drawText(heading, area.getX(), area.getY() - 26, area.getWidth(), 22, juce::Justification::centredLeft);

    juce::Image pixels(juce::Image::RGB, area.getWidth(), area.getHeight(), false);
    for (int x = 0; x < area.getWidth(); ++x)
        for (int y = 0; y < area.getHeight(); ++y)
            pixels.setPixelAt(x, y, colourForLevel(columns.level(x, y)));
    g.drawImageAt(pixels, area.getX(), area.getY());

    // Frequency grid: decades and their halves, labelled on the left.
    g.setFont(13.0f);
    const double marks[] = { 50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000 };
    for (auto hz : marks)
    {
        const auto top = columns.frequencyOfRow(0);
        if (hz >= top)
            continue;
        const auto y = area.getY() + (float) area.getHeight() * (float) (1.0 - std::log(hz / kLowestHz) / std::log(top / kLowestHz));
        g.setColour(kGrid);
        g.drawHorizontalLine((int) y, (float) area.getX(), (float) area.getRight());
        g.setColour(kText);
        const auto label = hz >= 1000 ? juce::String(hz / 1000, 0) + "k" : juce::String((int) hz);
        g.drawText(label, area.getX() - 46, (int) y - 8, 40, 16, juce::Justification::centredRight);
    }

    // Time axis: the finest of these steps that gives at most ten marks.
    auto step = 0.0;
    for (const auto candidate : { 0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 30.0, 60.0, 120.0, 300.0, 600.0 })
        if (step == 0.0 && seconds / candidate <= 10.0)
            step = candidate;
    for (double t = 0.0; step > 0.0 && t <= seconds + 1e-9; t += step)
    {
        const auto x = area.getX() + (float) (t / seconds) * (float) area.getWidth();
        g.setColour(kGrid);
        g.drawVerticalLine((int) x, (float) area.getY(), (float) area.getBottom());
        g.setColour(kText);
        g.drawText(juce::String(t, step < 1.0 ? 1 : 0) + " s", (int) x - 30, area.getBottom() + 4, 60, 16,
                   juce::Justification::centred);
    }

    g.setColour(kText.withAlpha(0.6f));
    g.drawRect(area);
}

void drawColourScale(juce::Graphics& g, juce::Rectangle<int> bar)
{
    for (int y = 0; y < bar.getHeight(); ++y)
    {
        const auto db = kCeilingDb - (kCeilingDb - kFloorDb) * (float) y / (float) (bar.getHeight() - 1);
        g.setColour(colourForLevel(db));
        g.fillRect(bar.getX(), bar.getY() + y, bar.getWidth(), 1);
    }
    g.setColour(kText);
    g.drawRect(bar);
    g.setFont(13.0f);
    for (auto db = kCeilingDb; db >= kFloorDb; db -= 20.0f)
    {
        const auto y = bar.getY() + (int) ((kCeilingDb - db) / (kCeilingDb - kFloorDb) * (float) (bar.getHeight() - 1));
        g.drawText(juce::String((int) db), bar.getRight() + 4, y - 8, 40, 16, juce::Justification::centredLeft);
    }
    g.drawText("dBFS", bar.getX() - 10, bar.getY() - 24, 60, 16, juce::Justification::centred);
}
} // namespace

juce::Image drawSpectrograms(const juce::AudioBuffer<float>& input, const juce::AudioBuffer<float>& output,
                             double sampleRate, const SpectrogramPicture& picture)
{
    juce::Image image(juce::Image::RGB, picture.width, picture.height, true);
    juce::Graphics g(image);
    g.fillAll(kBackground);

    // Header: title, then the settings in as many lines as they need.
    g.setColour(kText);
    g.setFont(juce::Font(22.0f, juce::Font::bold));
    g.drawText(picture.title, 20, 10, picture.width - 40, 28, juce::Justification::centredLeft);
    g.setFont(14.0f);
    const auto settingsText = picture.settings.isEmpty() ? juce::String("default settings")
                                                         : picture.settings.joinIntoString("   |   ");
    juce::AttributedString settingsLines;
    settingsLines.append(settingsText, juce::Font(14.0f), kText.withAlpha(0.85f));
    settingsLines.setWordWrap(juce::AttributedString::byWord);
    juce::TextLayout layout;
    layout.createLayout(settingsLines, (float) picture.width - 40.0f);
    const auto headerHeight = 44 + juce::jmin(100, (int) std::ceil(layout.getHeight()));
    layout.draw(g, { 20.0f, 42.0f, (float) picture.width - 40.0f, (float) headerHeight - 42.0f });

    const auto scaleWidth = 70;
    const auto left = 70, gap = 70, bottomMargin = 32, top = headerHeight + 34;
    const auto panelWidth = (picture.width - left - gap - scaleWidth - 40) / 2;
    const auto panelHeight = picture.height - top - bottomMargin;

    if (panelWidth < 16 || panelHeight < 16)
        return image;

    const juce::Rectangle<int> inputArea(left, top, panelWidth, panelHeight);
    const juce::Rectangle<int> outputArea(left + panelWidth + gap, top, panelWidth, panelHeight);
    const auto secondsOf = [sampleRate](const juce::AudioBuffer<float>& b) { return b.getNumSamples() / sampleRate; };

    drawPanel(g, inputArea, SpectrogramColumns(mid(input), sampleRate, panelWidth, panelHeight), "Input",
              secondsOf(input));
    drawPanel(g, outputArea, SpectrogramColumns(mid(output), sampleRate, panelWidth, panelHeight),
              "Output (latency included)", secondsOf(output));
    drawColourScale(g, { outputArea.getRight() + 24, top, 16, panelHeight });
    return image;
}

juce::String writePng(const juce::Image& image, const juce::File& file)
{
    juce::MemoryOutputStream encoded;
    juce::PNGImageFormat png;

    if (!png.writeImageToStream(image, encoded))
        return "cannot encode the spectrogram as PNG";

    if (!file.replaceWithData(encoded.getData(), encoded.getDataSize()))
        return "cannot write \"" + file.getFullPathName() + "\"";

    return {};
}
} // namespace oxa::render
