#include "element/ElementPersistence.h"
#include "element/Element.h"
#include "element/ElementFactory.h"
#include "element/ElementParamEnvelope.h"
#include "resources/Volume.h"
#include "resources/VolumeTable.h"

#include <juce_core/juce_core.h>

#include <cstring>
#include <map>
#include <mutex>

namespace oxa
{
namespace
{
const char* const currentRootTag = "OXA4";
const char* const legacyRootTag = "HarrierProgram";

ModulationPersistence makeDefaultModulation()
{
    ModulationPersistence m;
    m.saveConnections = [](ElementParamEnvelope& envelope, tinyxml2::XMLElement* target, SaveOptions& options) {
        envelope.saveConnections(target, options);
    };
    m.loadConnection = [](ElementParamEnvelope& envelope, const tinyxml2::XMLElement* node, SaveOptions& options,
                          int version) { return envelope.loadConnection(node, options, version); };
    m.clearConnections = [](ElementParamEnvelope& envelope) { envelope.clearConnections(); };
    return m;
}

struct SearchFolderTable
{
    std::mutex lock;
    std::map<std::string, std::vector<Path>> folders;

    static SearchFolderTable& instance()
    {
        static SearchFolderTable table;
        return table;
    }
};

void printTo(const tinyxml2::XMLDocument& document, std::string& bytes)
{
    tinyxml2::XMLPrinter printer;
    document.Print(&printer);
    bytes.assign(printer.CStr(), static_cast<std::size_t>(printer.CStrSize() > 0 ? printer.CStrSize() - 1 : 0));
}

bool writeAll(const std::string& bytes, const Path& path)
{
    std::unique_ptr<juce::OutputStream> out = path.openOutput(false);
    if (out == nullptr)
        return false;
    const bool written = out->write(bytes.data(), bytes.size());
    out->flush();
    return written;
}

/** Finds the image behind one "NeededFS" entry and mounts it, or tells the element why not. */
void mountNeededVolume(Element& element, const tinyxml2::XMLElement& entry, const SearchPaths& searchPaths)
{
    const char* source = entry.Attribute("Source");
    const Path wanted(source != nullptr ? source : "");
    if (wanted.isEmpty())
        return;
    Volume* owner = VFSHolder::getInstance()->volumeFor(wanted);
    if (owner != nullptr && owner->kind != Volume::nativeKind)
        return; // already mounted

    Path candidate = wanted;
    const std::string& text = wanted.str();
    for (std::size_t i = 0; !candidate.exists() && i < searchPaths.folders().size(); ++i)
    {
        candidate = searchPaths.folders()[i].joined(wanted);
        if (!candidate.exists() && text.rfind("VV_", 0) == 0)
            candidate = searchPaths.folders()[i].joined(Path(text.substr(3)));
    }
    if (!candidate.exists())
        candidate = wanted;

    std::string message;
    if (candidate.mount(message) != nullptr)
        return;
    auto error = std::make_unique<Error>();
    error->message = String(message);
    error->context = String("Loading");
    element.reportError(std::move(error));
}
} // namespace

std::string UsedVolume::sourceText() const { return volume != nullptr ? volume->root.str() : text; }

ModulationPersistence& ModulationPersistence::instance()
{
    static ModulationPersistence shared = makeDefaultModulation();
    return shared;
}

SearchPaths::SearchPaths(const std::string& name)
{
    auto& table = SearchFolderTable::instance();
    const std::lock_guard<std::mutex> guard(table.lock);
    auto found = table.folders.find(name);
    if (found != table.folders.end())
        folders_ = found->second;
}

void SearchPaths::setFolders(const std::string& name, std::vector<Path> folders)
{
    auto& table = SearchFolderTable::instance();
    const std::lock_guard<std::mutex> guard(table.lock);
    table.folders[name] = std::move(folders);
}

std::unique_ptr<tinyxml2::XMLDocument> makeXmlDocument()
{
    return std::make_unique<tinyxml2::XMLDocument>(true, tinyxml2::PRESERVE_WHITESPACE);
}

void saveToBytes(Element& element, std::string& bytes, SaveOptions& options)
{
    auto document = makeXmlDocument();
    tinyxml2::XMLElement* root = document->NewElement(options.legacyLayout != 0 ? legacyRootTag : currentRootTag);
    document->InsertEndChild(root);
    element.saveXml(root, options);
    for (const UsedVolume& used : options.usedVolumes)
        root->InsertNewChildElement("NeededFS")->SetAttribute("Source", used.sourceText().c_str());
    printTo(*document, bytes);
}

bool saveToFile(Element& element, const Path& path, SaveOptions& options)
{
    std::string bytes;
    saveToBytes(element, bytes, options);
    return writeAll(bytes, path);
}

bool loadFromBytes(Element& element, const char* bytes, std::size_t size, SaveOptions& options)
{
    auto document = makeXmlDocument();
    if (bytes == nullptr || document->Parse(bytes, size) != tinyxml2::XML_SUCCESS)
        document->Clear();

    if (options.loadListener != nullptr)
    {
        ElementLoadListener::Visitor visitor(*options.loadListener);
        document->Accept(&visitor);
    }

    const tinyxml2::XMLElement* root = document->RootElement();
    if (root == nullptr)
        return false;
    const bool current = std::strcmp(root->Name(), currentRootTag) == 0;

    const SearchPaths searchPaths("SoundBanksFolders");
    for (auto* entry = root->FirstChildElement("NeededFS"); entry != nullptr;
         entry = entry->NextSiblingElement("NeededFS"))
        mountNeededVolume(element, *entry, searchPaths);

    const tinyxml2::XMLElement* top = root->FirstChildElement();
    if (top == nullptr || element.typeName().text() != top->Name())
        return false;
    const bool loaded = element.loadXml(top, options, current ? currentDocumentVersion : legacyDocumentVersion);
    if (loaded)
        element.finishLoading();
    return loaded;
}

bool loadFromBytes(Element& element, const std::string& bytes, SaveOptions& options)
{
    return loadFromBytes(element, bytes.data(), bytes.size(), options);
}

bool loadFromFile(Element& element, const Path& path, SaveOptions& options)
{
    std::unique_ptr<DefaultInputStream> in = path.openInput();
    if (in == nullptr)
        return false;
    juce::MemoryBlock block;
    in->readIntoMemoryBlock(block);
    if (block.getSize() == 0)
        return false;
    options.documentPath = path;
    options.documentFolder = path.parent();
    return loadFromBytes(element, static_cast<const char*>(block.getData()), block.getSize(), options);
}

bool readXmlFile(tinyxml2::XMLDocument& document, const Path& path)
{
    std::unique_ptr<DefaultInputStream> in = path.openInput();
    if (in == nullptr)
        return false;
    juce::MemoryBlock block;
    in->readIntoMemoryBlock(block);
    if (document.Parse(static_cast<const char*>(block.getData()), block.getSize()) != tinyxml2::XML_SUCCESS)
    {
        document.Clear();
        return false;
    }
    return true;
}

bool writeXmlFile(const tinyxml2::XMLDocument& document, const Path& path)
{
    std::string bytes;
    printTo(document, bytes);
    return writeAll(bytes, path);
}
} // namespace oxa
