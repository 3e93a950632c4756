// The host's opaque state: the engine's XML, gzip-compressed behind a small header.
// Parsing runs on the host's thread; replacing the engine runs on the message thread.
#include "element/ElementFactory.h"
#include "element/ElementPersistence.h"
#include "plugin/ExportedPluginParameter.h"
#include "plugin/Plugin.h"

#include <cstring>
#include <tinyxml2.h>

namespace oxa
{
namespace
{
const char stateMagic[4] = {'O', 'X', 'A', '4'};
constexpr int stateFormatVersion = 1;
/** A bound on what a chunk may inflate to; element trees are a few kilobytes. */
constexpr int maxStateTextBytes = 64 * 1024 * 1024;

void parseInto(tinyxml2::XMLDocument& document, const char* text, std::size_t length)
{
    if (document.Parse(text, length) != tinyxml2::XML_SUCCESS)
        document.Clear();
}

bool onMessageThread()
{
    auto* manager = juce::MessageManager::getInstanceWithoutCreating();
    return manager != nullptr && manager->isThisTheMessageThread();
}
} // namespace

std::shared_ptr<tinyxml2::XMLDocument> Plugin::parseStateChunk(const void* data, int sizeInBytes)
{
    std::shared_ptr<tinyxml2::XMLDocument> document = makeXmlDocument();
    if (data == nullptr || sizeInBytes <= 0)
        return document;

    juce::MemoryInputStream in(data, (size_t) sizeInBytes, false);
    char magic[4] = {};
    if (in.read(magic, 4) != 4 || std::memcmp(magic, stateMagic, 4) != 0)
    {
        parseInto(*document, static_cast<const char*>(data), (size_t) sizeInBytes);
        return document;
    }
    if (in.readInt() != stateFormatVersion)
        return document;
    const int length = in.readInt();
    if (length <= 0 || length > maxStateTextBytes)
        return document;

    juce::GZIPDecompressorInputStream inflater(&in, false);
    std::string text((size_t) length, '\0');
    size_t got = 0;
    while (got < text.size())
    {
        const int want = (int) std::min<size_t>(text.size() - got, 65536);
        const int read = inflater.read(&text[got], want);
        if (read <= 0)
            break;
        got += (size_t) read;
    }
    parseInto(*document, text.data(), got);
    return document;
}

void Plugin::writeStateChunk(const char* xml, int length, juce::MemoryBlock& destination)
{
    juce::MemoryOutputStream out(256);
    out.write(stateMagic, 4);
    out.writeInt(stateFormatVersion);
    out.writeInt(length);
    {
        juce::GZIPCompressorOutputStream deflater(out);
        deflater.write(xml, (size_t) length);
        deflater.flush();
    }
    destination.replaceAll(out.getData(), out.getDataSize());
}

void Plugin::saveEngineInto(tinyxml2::XMLDocument& document)
{
    const std::lock_guard<std::recursive_mutex> tree(treeMutex);
    tinyxml2::XMLElement* root = document.RootElement();
    if (engine == nullptr || root == nullptr)
        return;
    // What the host wrote last goes into the project with everything it moves.
    applyPendingWrites();
    SaveOptions options;
    options.relativePaths = true;
    {
        const std::lock_guard<std::recursive_mutex> structure(engine->lock());
        engine->saveXml(root, options);
    }
    engine->clearModified();
}

void Plugin::getStateInformation(juce::MemoryBlock& destination)
{
    tinyxml2::XMLPrinter printer;
    std::shared_ptr<tinyxml2::XMLDocument> pending;
    {
        const juce::ScopedLock guard(pendingStateLock);
        pending = pendingState;
    }

    if (pending != nullptr)
    {
        // what the host set last and has not been applied yet goes back as it is
        pending->Print(&printer);
    }
    else
    {
        std::shared_ptr<tinyxml2::XMLDocument> document = makeXmlDocument();
        document->InsertEndChild(document->NewElement("OXA4"));
        if (onMessageThread() || juce::PluginHostType().type == juce::PluginHostType::AppleLogic)
            saveEngineInto(*document);
        else
        {
            auto done = std::make_shared<juce::WaitableEvent>();
            std::weak_ptr<bool> alive = lifeToken;
            const bool posted = juce::MessageManager::callAsync([this, alive, document, done] {
                if (alive.lock())
                    saveEngineInto(*document);
                done->signal();
            });
            if (posted)
                while (!done->wait(1000))
                    juce::Thread::sleep(1);
        }
        document->Print(&printer);
    }
    writeStateChunk(printer.CStr(), printer.CStrSize() > 0 ? printer.CStrSize() - 1 : 0, destination);
}

void Plugin::setStateInformation(const void* data, int sizeInBytes)
{
    // Only the standalone application has a place of its own that relative paths in a
    // state can start from: the folder it runs from. A plug-in's host decides nothing here.
    String basePath;
    if (wrapperType == wrapperType_Standalone)
        basePath = String(juce::File::getSpecialLocation(juce::File::currentApplicationFile)
                              .getParentDirectory()
                              .getFullPathName()
                              .toStdString());
    std::shared_ptr<tinyxml2::XMLDocument> document = parseStateChunk(data, sizeInBytes);
    {
        const juce::ScopedLock guard(pendingStateLock);
        pendingState = document;
    }
    // Hosts read parameters back as soon as this returns, so the new tree is in place
    // before it does, whatever thread called.
    applyState(document, basePath);
}

void Plugin::applyState(const std::shared_ptr<tinyxml2::XMLDocument>& document, const String& basePath)
{
    const std::lock_guard<std::recursive_mutex> tree(treeMutex);
    // the only owner left: a newer chunk took its place
    if (document == nullptr || document.use_count() <= 1)
        return;

    // The new tree is built and loaded before the render lock: nobody else sees it yet.
    const tinyxml2::XMLElement* root = document->RootElement();
    const tinyxml2::XMLElement* top = root != nullptr && std::strcmp(root->Name(), "OXA4") == 0
                                          ? root->FirstChildElement()
                                          : nullptr;
    std::shared_ptr<Engine> loaded;
    if (top != nullptr)
    {
        Engine::registerType();
        loaded = std::dynamic_pointer_cast<Engine>(ElementFactory::instance().create(String(top->Name())));
    }
    if (loaded != nullptr)
    {
        loaded->setAutomation(this); // so that its "Automation" is held for later
        SaveOptions options;
        if (!basePath.isEmpty())
            options.documentFolder = Path(basePath.str());
        loaded->loadXml(top, options, currentDocumentVersion);
        loaded->finishLoading();
        // host threads reach the new tree before the interface side connects to it
        for (ExportedPluginParameter* p : slots)
            if (Element* target = p->targetPath().isEmpty() ? nullptr : loaded->findElement(p->targetPath()))
                target->prepareParameterSignals();

        const juce::ScopedLock render(renderLock_); // the audio thread passes blocks dry meanwhile
        retiredEngines.push_back(std::move(engine)); // views on the message thread still look at it
        engine = loaded;
        if (sampleRate_.load() > 0 && blockSize_.load() > 0)
        {
            auxBuses.clear();
            rebuildBuses(sampleRate_.load(), blockSize_.load());
        }
    }
    retargetHostParameters();

    {
        const juce::ScopedLock guard(pendingStateLock);
        if (pendingState == document)
            pendingState.reset();
    }

    if (onMessageThread())
        followEngineOnMessageThread();
    else
    {
        std::weak_ptr<bool> alive = lifeToken;
        juce::MessageManager::callAsync([this, alive] {
            if (alive.lock())
                followEngineOnMessageThread();
        });
    }
}

void Plugin::followEngineOnMessageThread()
{
    const std::lock_guard<std::recursive_mutex> tree(treeMutex);
    if (engine != nullptr)
    {
        if (proxy == nullptr)
            setEngine(engine);
        else if (proxy->engine() != engine.get())
            proxy->setEngine(engine.get()); // watchers find their elements again by path
        if (engine->isPrepared())
            engine->applyHeldAutomation();
    }
    // Binding through the proxy may have pointed a host parameter at the tree it saw.
    retargetHostParameters();
    std::vector<std::shared_ptr<Engine>> old;
    old.swap(retiredEngines);
}
} // namespace oxa
