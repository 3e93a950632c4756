// The standalone application: JUCE's standalone window (audio and MIDI settings, state
// files) and, beside it, an on-screen keyboard that plays the test voice into the effect.
// Built into the standalone program only.
#include <juce_audio_devices/juce_audio_devices.h>
#include <juce_audio_plugin_client/juce_audio_plugin_client.h>
#include <juce_audio_utils/juce_audio_utils.h>
#include <juce_gui_extra/juce_gui_extra.h>

#include <juce_audio_plugin_client/Standalone/juce_StandaloneFilterWindow.h>

namespace oxa
{
namespace
{
/** A keyboard whose keys go the same way as notes from a MIDI input: into the player's
    message collector, which hands them to the plug-in at the next block. */
class KeyboardWindow : public juce::DocumentWindow
{
public:
    explicit KeyboardWindow(juce::AudioProcessorPlayer& player)
        : DocumentWindow("Flux Deck - Keyboard", juce::Colours::darkgrey, DocumentWindow::minimiseButton),
          collector(player.getMidiMessageCollector()),
          keyboard(state, juce::MidiKeyboardComponent::horizontalKeyboard)
    {
        state.addListener(&collector);
        keyboard.setAvailableRange(36, 96);
        keyboard.setLowestVisibleKey(48);
        keyboard.setSize(700, 90);
        setContentNonOwned(&keyboard, true);
        setUsingNativeTitleBar(true);
    }

    ~KeyboardWindow() override
    {
        state.removeListener(&collector);
        clearContentComponent();
    }

private:
    juce::MidiMessageCollector& collector;
    juce::MidiKeyboardState state;
    juce::MidiKeyboardComponent keyboard;
};

class StandaloneApplication : public juce::JUCEApplication
{
public:
    StandaloneApplication()
    {
        juce::PropertiesFile::Options options;
        options.applicationName = getApplicationName();
        options.filenameSuffix = ".settings";
        options.folderName = "~/.config";
        properties.setStorageParameters(options);
    }

    const juce::String getApplicationName() override { return JucePlugin_Name; }
    const juce::String getApplicationVersion() override { return JucePlugin_VersionString; }
    bool moreThanOneInstanceAllowed() override { return true; }
    void anotherInstanceStarted(const juce::String&) override {}

    void initialise(const juce::String&) override
    {
        const auto background = juce::LookAndFeel::getDefaultLookAndFeel().findColour(
            juce::ResizableWindow::backgroundColourId);
        mainWindow = std::make_unique<juce::StandaloneFilterWindow>(getApplicationName(), background,
                                                                    properties.getUserSettings(), false);
        mainWindow->setVisible(true);

        keyboardWindow = std::make_unique<KeyboardWindow>(mainWindow->getPluginHolder()->player);
        const auto below = mainWindow->getBounds();
        keyboardWindow->setTopLeftPosition(below.getX(), below.getBottom() + 4);
        keyboardWindow->setVisible(true);
    }

    void shutdown() override
    {
        keyboardWindow = nullptr;
        mainWindow = nullptr;
        properties.saveIfNeeded();
    }

    void systemRequestedQuit() override
    {
        if (mainWindow != nullptr)
            mainWindow->pluginHolder->savePluginState();
        if (juce::ModalComponentManager::getInstance()->cancelAllModalComponents())
        {
            // a modal dialog was open: let it close, then ask again
            juce::Timer::callAfterDelay(100, [] {
                if (auto* app = juce::JUCEApplicationBase::getInstance())
                    app->systemRequestedQuit();
            });
            return;
        }
        quit();
    }

private:
    juce::ApplicationProperties properties;
    std::unique_ptr<juce::StandaloneFilterWindow> mainWindow;
    std::unique_ptr<KeyboardWindow> keyboardWindow;
};
} // namespace
} // namespace oxa

juce::JUCEApplicationBase* juce_CreateApplication() { return new oxa::StandaloneApplication(); }
