#include "plugin/Plugin.h"
#include "element/ParameterRegistry.h"
#include "plugin/ExportedPluginParameter.h"
#include "resources/UserFolders.h"

#include <tinyxml2.h>

namespace oxa
{
std::atomic<int> Plugin::liveCount { 0 };

namespace
{
void applyPendingInTree(Element& element)
{
    element.applyPendingParameters(element.mainState());
    for (const auto& child : element.children())
        applyPendingInTree(*child);
}

bool hasPendingInTree(const Element& element)
{
    if (element.hasPendingUpdate())
        return true;
    for (const auto& child : element.children())
        if (hasPendingInTree(*child))
            return true;
    return false;
}

uint32_t nowMilliseconds() { return juce::Time::getMillisecondCounter(); }
} // namespace

/** Host writes made while nothing renders would otherwise wait for a block that may
    never come: getters, the window and a saved project would miss their side effects. */
class Plugin::IdleWriteTimer : public juce::Timer
{
public:
    explicit IdleWriteTimer(Plugin& owner) : plugin(owner) { startTimer(25); }
    ~IdleWriteTimer() override { stopTimer(); }

private:
    void timerCallback() override
    {
        std::unique_lock<std::recursive_mutex> tree(plugin.treeMutex, std::try_to_lock);
        if (!tree.owns_lock() || plugin.engine == nullptr || plugin.audioIsLive())
            return;
        if (!hasPendingInTree(*plugin.engine))
            return;
        const juce::ScopedLock render(plugin.renderLock_);
        applyPendingInTree(*plugin.engine);
    }

    Plugin& plugin;
};

Plugin::Plugin(const PluginDefinition& def, const BusesProperties& buses)
    : juce::AudioProcessor(buses), definition(def), context(std::make_unique<RenderContext>())
{
    switch (wrapperType)
    {
        case wrapperType_VST: settingsKeyPath = settingsPath(def, "SOFTWARE\\%1\\%2\\VST"); break;
        case wrapperType_VST3: settingsKeyPath = settingsPath(def, "SOFTWARE\\%1\\%2\\VST3"); break;
        case wrapperType_AAX: settingsKeyPath = settingsPath(def, "SOFTWARE\\%1\\%2\\AAX"); break;
        case wrapperType_Standalone: settingsKeyPath = settingsPath(def, "SOFTWARE\\%1\\%2\\SA"); break;
        default: break;
    }
    if (!settingsKeyPath.empty())
        settings = std::make_unique<SettingsStore>(String(settingsKeyPath));
    productSettings(def.makerKey(), def.displayName()); // the key every instance shares
    openUserFolders(def.makerKey(), def.displayName(), def.identifier(),
                    juce::File::getSpecialLocation(juce::File::currentExecutableFile).getParentDirectory());
    events.reserve(1024);
    bypassParameter = std::make_unique<juce::AudioParameterBool>("bypass", "Bypass", false);
    if (juce::MessageManager::getInstanceWithoutCreating() != nullptr)
        idleWriteTimer = std::make_unique<IdleWriteTimer>(*this);
    ++liveCount;
}

Plugin::~Plugin()
{
    idleWriteTimer.reset();
    lifeToken.reset();
    setEngine(nullptr);
    retiredEngines.clear();
    --liveCount;
}

bool Plugin::audioIsLive(uint32_t milliseconds) const
{
    return sampleRate_.load() > 0 && renderedBlocks.load() > 0
           && nowMilliseconds() - lastRenderMilliseconds.load() < milliseconds;
}

bool Plugin::treeHasPendingWrites() const { return engine != nullptr && hasPendingInTree(*engine); }

void Plugin::applyPendingWrites()
{
    const std::lock_guard<std::recursive_mutex> tree(treeMutex);
    if (!treeHasPendingWrites())
        return;
    if (audioIsLive())
    {
        // A rendering audio thread applies pending writes at the head of its next block;
        // two blocks on, every write made before this call has gone in. Waiting for that
        // spares the host a dry block in the middle of playback.
        const uint32_t seen = renderedBlocks.load();
        const uint32_t started = nowMilliseconds();
        while (renderedBlocks.load() - seen < 2 && nowMilliseconds() - started < 2 * idleAfterMilliseconds
               && audioIsLive())
            juce::Thread::sleep(1);
        if (renderedBlocks.load() - seen >= 2)
            return;
    }
    const juce::ScopedLock render(renderLock_);
    applyPendingInTree(*engine);
}

void Plugin::setReportedLatency(int samples)
{
    reportedLatency.store(samples);
    setLatencySamples(samples);
}

void Plugin::setEngine(const std::shared_ptr<Engine>& newEngine)
{
    if (newEngine == nullptr)
    {
        for (ExportedPluginParameter* p : slots)
        {
            p->unbindSlot(false);
            p->detachFromProxy();
        }
        slotOfTarget.clear();
        proxy.reset();
        engine.reset();
        return;
    }
    // the old tree stays alive until every watcher has moved over to the new one
    std::shared_ptr<Engine> previous = std::move(engine);
    engine = newEngine;
    engine->setAutomation(this);
    if (proxy == nullptr)
        proxy = std::make_unique<EngineProxy>(this, engine.get(), true);
    else
        proxy->setEngine(engine.get());
    previous.reset();
}

void Plugin::retargetHostParameters()
{
    for (ExportedPluginParameter* p : slots)
        p->pointHostAt(engine != nullptr && !p->targetPath().isEmpty() ? engine->findElement(p->targetPath())
                                                                       : nullptr);
    hostGate_.waitForReaders();
}

bool Plugin::isBusesLayoutSupported(const BusesLayout& layouts) const
{
    const auto in = layouts.getMainInputChannelSet();
    const auto out = layouts.getMainOutputChannelSet();
    if (wrapperType == wrapperType_Standalone)
        return in == out || in.isDisabled();

    const auto mono = juce::AudioChannelSet::mono();
    const auto stereo = juce::AudioChannelSet::stereo();
    return (in == mono && out == mono) || (in == mono && out == stereo) || (in == stereo && out == stereo);
}

void Plugin::prepareToPlay(double sampleRate, int maximumBlockSize)
{
    const std::lock_guard<std::recursive_mutex> tree(treeMutex);
    if (sampleRate <= 0 || maximumBlockSize <= 0 || engine == nullptr)
        return;
    if (engine->isPrepared() && engine->sampleRate() == (float) sampleRate
        && engine->maxBlockSize() == (uint16_t) maximumBlockSize && !layoutChanged)
        return;

    {
        const juce::ScopedLock lock(renderLock_);
        rebuildBuses(sampleRate, maximumBlockSize);
        layoutChanged = false;
    }
    engine->applyHeldAutomation();
}

void Plugin::rebuildBuses(double sampleRate, int blockSize)
{
    sampleRate_.store(sampleRate);
    blockSize_.store(blockSize);
    context->setSampleRate((float) sampleRate);
    engine->prepare(sampleRate, blockSize);

    // Aux outputs: index of aux bus i is its bus number plus one; index 1 stays unused.
    for (size_t i = 0; i < auxBuses.size(); ++i)
        engine->setBus((uint32_t) i + 2, nullptr);
    std::vector<std::shared_ptr<AudioBus>> newAux;
    uint32_t disabledChannels = 0;
    for (int i = 1; i < getBusCount(false); ++i)
    {
        const auto* b = getBus(false, i);
        const uint32_t definitionCount = definition.auxChannelCount((size_t) i - 1);
        const uint32_t count = b->isEnabled() ? (uint32_t) b->getNumberOfChannels() : definitionCount;
        auto bus = std::make_shared<AudioBus>(count, (uint32_t) blockSize, b->getName().toStdString());
        newAux.push_back(bus);
        engine->setBus((uint32_t) i + 1, bus.get());
        if (!b->isEnabled())
            disabledChannels += definitionCount;
    }

    int mainChannels = getMainBusNumOutputChannels();
    if (mainChannels <= 0)
        mainChannels = 2;
    auto newMain = std::make_unique<AudioBus>((uint32_t) mainChannels, (uint32_t) blockSize);
    engine->setBus(0, newMain.get());

    if (disabledChannels != auxScratchChannels || (uint32_t) blockSize != auxScratchBlockSize)
    {
        auxScratchChannels = disabledChannels;
        auxScratchBlockSize = (uint32_t) blockSize;
        const size_t stride = ((size_t) blockSize + 3) & ~size_t(3);
        auxScratch.assign(stride * disabledChannels, 0.0f);
        auxScratchPointers.assign(disabledChannels + 1, nullptr);
        for (uint32_t c = 0; c < disabledChannels; ++c)
            auxScratchPointers[c] = auxScratch.data() + c * stride;
    }

    {
        const juce::ScopedLock guard(bypassLock_);
        bypass.prepare(mainChannels, sampleRate, blockSize, maximumLatency(sampleRate));
    }

    // Held automation binds host parameters through the proxy, on the message thread:
    // prepareToPlay and the state's interface step apply it, not this.
    mainBus = std::move(newMain);
    auxBuses = std::move(newAux);
}

void Plugin::reset()
{
    // Hosts call this from whatever thread stops processing, the audio thread among them,
    // so it never waits: with the render lock taken the next rendered block resets.
    const juce::ScopedTryLock render(renderLock_);
    if (!render.isLocked())
        resetRequested.store(true);
    else if (engine != nullptr)
        engine->reset();
}

void Plugin::updateTrackProperties(const TrackProperties& properties)
{
    const std::lock_guard<std::recursive_mutex> tree(treeMutex);
    if (engine != nullptr)
        engine->setTrackProperties(std::make_shared<TrackProperties>(properties));
}

void Plugin::updateTransport(int numSamples)
{
    std::optional<HostPosition> position;
    if (auto* head = getPlayHead())
    {
        if (const auto info = head->getPosition())
        {
            HostPosition p;
            if (const auto bpm = info->getBpm())
                p.bpm = *bpm;
            if (const auto sig = info->getTimeSignature())
            {
                p.numerator = sig->numerator;
                p.denominator = sig->denominator;
            }
            if (const auto ppq = info->getPpqPosition())
                p.ppqPosition = *ppq;
            if (const auto bar = info->getPpqPositionOfLastBarStart())
                p.ppqLastBarStart = *bar;
            if (const auto loop = info->getLoopPoints())
            {
                p.loopStart = loop->ppqStart;
                p.loopEnd = loop->ppqEnd;
            }
            p.looping = info->getIsLooping();
            p.playing = info->getIsPlaying();
            position = p;
        }
    }
    const double prepared = sampleRate_.load();
    const double rate = prepared > 0 ? prepared : (double) context->sampleRate;
    transport.update(position, numSamples, rate, isNonRealtime(), context->transport);
}

void Plugin::processBlock(juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi)
{
    const int numSamples = buffer.getNumSamples();
    updateTransport(numSamples);

    const int totalInputs = getTotalNumInputChannels();
    if (!buffer.hasBeenCleared())
        for (int c = totalInputs; c < buffer.getNumChannels(); ++c)
            buffer.clear(c, 0, numSamples);

    for (const auto metadata : midi)
    {
        const uint8_t* raw = metadata.data;
        const int size = metadata.numBytes;
        if (size <= 0)
            continue;
        const uint8_t status = raw[0];
        enqueueHostEvent(0, status & 15, status & 240, size > 1 ? raw[1] : 0, size > 2 ? raw[2] : 0,
                         metadata.samplePosition);
    }

    if (numSamples > 0)
    {
        const int outChannels = getMainBusNumOutputChannels();
        const int first = getChannelIndexInProcessBlockBuffer(false, 0, 0);
        const int usable = std::min(outChannels, buffer.getNumChannels() - first);
        float* const* channels = buffer.getArrayOfWritePointers() + first;
        hostBlock.init(channels, (uint32_t) std::max(usable, 0), (uint32_t) numSamples);
        hostBlock.outputAuxCount = (uint32_t) std::max(getBusCount(false) - 1, 0);
        hostBlock.inputAuxCount = (uint32_t) std::max(getBusCount(true) - 1, 0);
        renderHostBlock(hostBlock);
    }

    midi.clear();
    for (const EngineEvent& e : context->outputEvents)
    {
        const int channel = e.channel < 0 ? 1 : e.channel + 1;
        juce::MidiMessage message;
        switch (e.type)
        {
            case EventType::noteOff: message = juce::MidiMessage::noteOff(channel, (int) e.data1, (uint8_t) e.data2); break;
            case EventType::noteOn: message = juce::MidiMessage::noteOn(channel, (int) e.data1, (uint8_t) e.data2); break;
            case EventType::aftertouch:
                message = juce::MidiMessage::aftertouchChange(channel, (int) e.data1, (int) e.data2);
                break;
            case EventType::controller:
                message = juce::MidiMessage::controllerEvent(channel, (int) e.data1, (int) e.data2);
                break;
            case EventType::pitchWheel:
                message = juce::MidiMessage::pitchWheel(channel, (int) (e.data2 * 128 + e.data1));
                break;
            default: continue;
        }
        midi.addEvent(message, (int) e.sampleOffset);
    }
    context->outputEvents.clear();
}

void Plugin::enqueueHostEvent(uint8_t port, uint8_t channel, uint8_t status, uint8_t data1, uint8_t data2,
                              int sampleOffset)
{
    if (status == 240 || status < 128)
        return;
    EngineEvent e;
    e.type = status;
    if (status == EventType::noteOn && data2 == 0)
        e.type = EventType::noteOff;
    e.sampleOffset = (uint64_t) std::max(sampleOffset, 0);
    e.port = port;
    e.channel = channel;
    e.data1 = data1;
    e.data2 = data2;
    events.push_back(e); // room for 1024 was reserved; a larger burst grows the list
}

void Plugin::renderHostBlock(HostAudioBlock& block)
{
    const juce::ScopedNoDenormals noDenormals;
    // The bypass delay is only re-sized in prepare; a block that finds it busy is not delayed.
    const juce::ScopedTryLock bypassGuard(bypassLock_);
    const int latency = reportedLatency.load();
    const int channels = (int) block.channelCount();
    const bool keepTime = bypassGuard.isLocked() && bypass.canHandle(channels, (int) block.length, latency);
    if (keepTime)
        bypass.pushInput(block.mainChannels(), channels, (int) block.length);
    renderedThisBlock = false;
    renderEngine(block, 0, 0);
    if (keepTime)
        bypass.mixOutput(block.mainChannels(), channels, (int) block.length, latency, bypassParameter->get(),
                         renderedThisBlock);
}

void Plugin::renderEngine(HostAudioBlock& block, int, int)
{
    const juce::ScopedTryLock lock(renderLock_);
    if (!lock.isLocked() || engine == nullptr || mainBus == nullptr)
    {
        block.silent = true; // the input passes unprocessed; events wait for the next block
        return;
    }
    if (resetRequested.exchange(false))
        engine->reset();

    mainBus->setChannels(block.mainChannels());
    mainBus->blockLength = block.length;
    if (getBusCount(true) == 0 || getMainBusNumInputChannels() == 0)
        mainBus->markSilent(block.length);
    for (auto& aux : auxBuses)
        aux->markSilent(block.length);

    events.sortByOffset();
    engine->processEvents(*context, events, block.length);
    engine->render(*context, block.length);
    if (mainBus->isSilent())
        block.silent = true;

    events.clear();
    context->endOfBlock(block.length);
    renderedThisBlock = true;
    lastRenderMilliseconds.store(nowMilliseconds());
    renderedBlocks.fetch_add(1);
}

int32_t Plugin::queryIEditController(const Steinberg::TUID, void** obj)
{
    *obj = nullptr;
    return (int32_t) 0x80004002; // no such interface
}

int32_t Plugin::queryIAudioProcessor(const Steinberg::TUID, void** obj)
{
    *obj = nullptr;
    return -1;
}

ExportedPluginParameter* Plugin::exportParameter(const String& path, uint32_t id, const String& displayName,
                                                 bool)
{
    const String parameterName = ParameterRegistry::instance().nameOf(id);
    return exportParameter(path, parameterName, parameterName, displayName);
}

ExportedPluginParameter* Plugin::exportParameter(const String& path, const String& parameterName,
                                                 const String& defaultName, const String& displayName)
{
    auto* p = exportParameter(defaultName);
    slotOfTarget[{path, parameterName}] = p->slotIndex();
    p->setTarget(path, parameterName, displayName);
    return p;
}

ExportedPluginParameter* Plugin::exportParameter(const String& defaultName)
{
    auto* p = new ExportedPluginParameter(*this, proxy.get(), (unsigned) slots.size(), defaultName);
    slots.push_back(p);
    addParameter(p);
    return p;
}

ExportedPluginParameter* Plugin::parameterAt(size_t index) const
{
    return index < slots.size() ? slots[index] : nullptr;
}

void Plugin::bindSlot(size_t index, const AutomationTarget& target, const String& displayName)
{
    if (index >= slots.size())
        return;
    slotOfTarget[{target.path, target.parameterName}] = index;
    slots[index]->setTarget(target.path, target.parameterName, displayName);
}

void Plugin::unbindSlot(size_t index, bool tellHost)
{
    if (index >= slots.size())
        return;
    ExportedPluginParameter* p = slots[index];
    for (auto it = slotOfTarget.begin(); it != slotOfTarget.end();)
        it = it->second == index ? slotOfTarget.erase(it) : std::next(it);
    p->unbindSlot(tellHost);
}

std::optional<size_t> Plugin::findSlot(const String& path, uint32_t id) const
{
    for (size_t i = 0; i < slots.size(); ++i)
        if (slots[i]->isBound() && slots[i]->parameterId() == id && slots[i]->targetPath() == path)
            return i;
    return std::nullopt;
}

namespace
{
bool elementHasParameter(EngineProxy* proxy, const AutomationTarget& target)
{
    if (proxy == nullptr || target.path.isEmpty() || target.parameterName.isEmpty())
        return false;
    Element* e = proxy->acquireProxy(target.path);
    return e != nullptr && e->parameterId(target.parameterName.c_str()) != 0;
}
} // namespace

bool Plugin::bind(const AutomationTarget& target, const String& displayName)
{
    const std::pair<String, String> key {target.path, target.parameterName};
    auto known = slotOfTarget.find(key);
    if (known != slotOfTarget.end())
    {
        const ExportedPluginParameter* p = slots[known->second];
        if (p->targetPath() == target.path && p->targetName() == target.parameterName)
            return false;
        slotOfTarget.erase(known);
    }
    if (!elementHasParameter(proxy.get(), target))
        return false;

    // a slot that held this target before gets it back, so host automation lanes stay put
    for (size_t i = 0; i < slots.size(); ++i)
    {
        ExportedPluginParameter* p = slots[i];
        if (p->targetPath().isEmpty() && p->lastTargetPath() == target.path
            && p->lastTargetName() == target.parameterName)
        {
            bindSlot(i, target, displayName);
            return true;
        }
    }
    for (size_t n = 0; n < slots.size(); ++n)
    {
        const size_t i = (roundRobin + n) % slots.size();
        if (slots[i]->targetPath().isEmpty())
        {
            bindSlot(i, target, displayName);
            roundRobin = (i + 1) % slots.size();
            return true;
        }
    }
    return false;
}

void Plugin::unbind(const AutomationTarget& target)
{
    auto known = slotOfTarget.find({target.path, target.parameterName});
    if (known == slotOfTarget.end())
        return;
    const size_t index = known->second;
    slotOfTarget.erase(known);
    slots[index]->unbindSlot(false);
    updateHostDisplay(ChangeDetails().withParameterInfoChanged(true));
}

bool Plugin::save(tinyxml2::XMLElement* node)
{
    if (node == nullptr)
        return false;
    bool wrote = false;
    for (ExportedPluginParameter* p : slots)
    {
        if (!p->isBound())
            continue;
        tinyxml2::XMLElement* child = node->InsertNewChildElement("AutomationConnection");
        child->SetAttribute("sourceIndex", p->slotIndex());
        child->SetAttribute("targetPath", p->targetPath().c_str());
        child->SetAttribute("parameterName", p->targetName().c_str());
        child->SetAttribute("parameterDisplayName", p->displayNameOverride().c_str());
        wrote = true;
    }
    return wrote;
}

void Plugin::load(const tinyxml2::XMLElement* node)
{
    struct Wanted
    {
        AutomationTarget target;
        String displayName;
    };
    std::vector<std::optional<Wanted>> wanted(slots.size());
    for (const tinyxml2::XMLElement* child = node != nullptr ? node->FirstChildElement("AutomationConnection")
                                                               : nullptr;
         child != nullptr; child = child->NextSiblingElement("AutomationConnection"))
    {
        unsigned index = 0;
        if (child->QueryUnsignedAttribute("sourceIndex", &index) != tinyxml2::XML_SUCCESS || index >= slots.size())
            continue;
        const char* path = child->Attribute("targetPath");
        const char* name = child->Attribute("parameterName");
        const char* shown = child->Attribute("parameterDisplayName");
        AutomationTarget target {String(path != nullptr ? path : ""), String(name != nullptr ? name : "")};
        if (!elementHasParameter(proxy.get(), target))
            continue;
        // An empty display name stays empty: the slot then shows the parameter's own
        // display name, so the names a host lists do not change when a project reopens.
        wanted[index] = Wanted {target, String(shown != nullptr ? shown : "")};
    }

    slotOfTarget.clear();
    roundRobin = 0;
    for (size_t i = 0; i < slots.size(); ++i)
    {
        ExportedPluginParameter* p = slots[i];
        const bool same = wanted[i].has_value() && p->isBound() && p->targetPath() == wanted[i]->target.path
                          && p->targetName() == wanted[i]->target.parameterName;
        if (same)
        {
            // Left bound: host calls during a state load keep answering with the parameter.
            slotOfTarget[{p->targetPath(), p->targetName()}] = i;
            p->setDisplayNameOverride(wanted[i]->displayName);
            continue;
        }
        if (!p->targetPath().isEmpty())
            p->unbindSlot(true);
        if (wanted[i].has_value())
            bindSlot(i, wanted[i]->target, wanted[i]->displayName);
    }
}
} // namespace oxa
