#include "snapshot/Scenes.h"

#include "snapshot/WindowDriver.h"

namespace oxa::snapshot
{
namespace
{
void recordHead(WindowDriver& d, bool on)
{
    d.setBool("ApplyRecordHead", on);
    d.setFloat("MagneticHardness", 1.0f);
    d.setFloat("Hysteresis", 0.45f);
}

void compander(WindowDriver& d, bool linked)
{
    d.setBool("ApplyCompander", true);
    d.setBool("NRLink", linked);
    d.setInt("NoiseReductionEncoder", 1);
    d.setInt("NoiseReductionDecoder", 2);
}

void deepFlange(WindowDriver& d)
{
    d.setFloat("MaxRelativeDelay", 0.012f);
    d.setFloat("LFOFreq", 0.4f);
}
} // namespace

const std::vector<Scene>& scenes()
{
    static const std::vector<Scene> all = {
        {"record-head-on", "the waveform picture bent by a hard record head",
         [](WindowDriver& d, const Scene::Shoot& shoot) {
             recordHead(d, true);
             WindowDriver::settle();
             shoot("");
         }},
        {"record-response", "the record head's frequency response, with its low cut",
         [](WindowDriver& d, const Scene::Shoot& shoot) {
             recordHead(d, true);
             d.panel().getResponseDisplayButton().triggerClick();
             WindowDriver::settle();
             shoot("");
         }},
        {"record-head-off", "both record pictures dimmed and flat with the head off",
         [](WindowDriver& d, const Scene::Shoot& shoot) {
             recordHead(d, false);
             WindowDriver::settle();
             shoot("-waveform");
             d.panel().getResponseDisplayButton().triggerClick();
             WindowDriver::settle();
             shoot("-response");
         }},
        {"compander-linked", "noise reduction on, the decoder following the encoder",
         [](WindowDriver& d, const Scene::Shoot& shoot) {
             compander(d, true);
             WindowDriver::settle();
             shoot("");
         }},
        {"compander-unlinked", "noise reduction on, encoder and decoder chosen apart",
         [](WindowDriver& d, const Scene::Shoot& shoot) {
             compander(d, false);
             WindowDriver::settle();
             shoot("");
         }},
        {"flange", "deck two moving against deck one as the LFO runs",
         [](WindowDriver& d, const Scene::Shoot& shoot) {
             deepFlange(d);
             for (const char* suffix : {"-a", "-b", "-c"})
             {
                 d.render(0.7);
                 shoot(suffix);
             }
         }},
        {"phase-invert", "deck two turned over while the LFO runs",
         [](WindowDriver& d, const Scene::Shoot& shoot) {
             deepFlange(d);
             d.setBool("PhaseInvert", true);
             d.render(1.0);
             shoot("");
         }},
        {"wow-flutter", "the trace of the tape speed with wow and flutter, reels turning",
         [](WindowDriver& d, const Scene::Shoot& shoot) {
             d.setBool("ApplyTransport", true);
             d.setFloat("WowMod", 0.7f);
             d.setFloat("FlutterMod", 0.5f);
             d.render(3.0);
             shoot("");
         }},
    };
    return all;
}
} // namespace oxa::snapshot
