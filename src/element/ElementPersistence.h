#pragma once
// Writing an element (and everything below it) as an XML document and reading it
// back, in memory or through a Path. The per-element rules live in ElementXml.cpp.

#include "resources/Path.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <tinyxml2.h>

namespace oxa
{
class Element;
class ElementParamEnvelope;
class ControlSignalMapper;
class Volume;

class ElementLoadListener;

/** A volume that a saved element depends on; written as one "NeededFS". */
struct UsedVolume
{
    std::string text;         // the path as stored when no volume is open
    Volume* volume = nullptr; // the open volume, when there is one

    /** The "Source" text: the open volume's own path, else the stored text. */
    std::string sourceText() const;
    bool operator<(const UsedVolume& other) const { return sourceText() < other.sourceText(); }
};

/** Handed down through every saveXml and loadXml of one document. */
struct SaveOptions
{
    uint32_t word = 0;
    Path documentPath;
    bool relativePaths = false;
    Path documentFolder;
    uint8_t loadConnections = 1;
    uint8_t legacyLayout = 0;
    std::set<UsedVolume> usedVolumes;
    ElementLoadListener* loadListener = nullptr;
};

/** Watches a load: may veto single elements and can count the work beforehand. */
class ElementLoadListener
{
public:
    virtual ~ElementLoadListener() = default;
    /** Asked before an element is read; false skips it and everything below it. */
    virtual bool onElement(Element& element, SaveOptions& options, int version) = 0;
    virtual void onProgress() = 0;

    /** Walks a document, calling onProgress once per XML element. */
    class Visitor : public tinyxml2::XMLVisitor
    {
    public:
        explicit Visitor(ElementLoadListener& listener) : listener_(listener) {}
        bool VisitEnter(const tinyxml2::XMLElement&, const tinyxml2::XMLAttribute*) override
        {
            listener_.onProgress();
            return true;
        }

    private:
        ElementLoadListener& listener_;
    };
};

/** Version handed to the top element of a current document; -1 marks the old flat layout. */
constexpr int currentDocumentVersion = 0x7fffffff;
constexpr int legacyDocumentVersion = -1;

/** The ways modulation objects are written and read. Defaults work on the envelope's
    children and on the element factory; the modulation code may replace any of them. */
struct ModulationPersistence
{
    /** Writes the envelope's connections as children of `target`. */
    std::function<void(ElementParamEnvelope&, tinyxml2::XMLElement* target, SaveOptions&)> saveConnections;
    /** Reads one connection node into the envelope. */
    std::function<bool(ElementParamEnvelope&, const tinyxml2::XMLElement* node, SaveOptions&, int version)>
        loadConnection;
    /** Drops every connection of the envelope. */
    std::function<void(ElementParamEnvelope&)> clearConnections;
    /** The mapper behind an element made by the factory, or null when it is none. */
    std::function<std::shared_ptr<ControlSignalMapper>(const std::shared_ptr<Element>&)> asMapper;
    /** True for a connection child whose source was never found. */
    std::function<bool(const Element&)> isUnresolvedConnection;

    static ModulationPersistence& instance();
};

/** Folder lists that the loader searches for missing volumes, by name. */
class SearchPaths
{
public:
    explicit SearchPaths(const std::string& name);
    const std::vector<Path>& folders() const { return folders_; }

    static void setFolders(const std::string& name, std::vector<Path> folders);

private:
    std::vector<Path> folders_;
};

/** Builds the document of `element` and prints it, without the trailing NUL. */
void saveToBytes(Element& element, std::string& bytes, SaveOptions& options);
/** saveToBytes, written through the path; false when the stream failed. */
bool saveToFile(Element& element, const Path& path, SaveOptions& options);
bool loadFromBytes(Element& element, const char* bytes, std::size_t size, SaveOptions& options);
bool loadFromBytes(Element& element, const std::string& bytes, SaveOptions& options);
/** Reads the whole file; false when it does not open or is empty. */
bool loadFromFile(Element& element, const Path& path, SaveOptions& options);

/** A document as the tree writes it: entities processed, whitespace kept. */
std::unique_ptr<tinyxml2::XMLDocument> makeXmlDocument();
bool readXmlFile(tinyxml2::XMLDocument& document, const Path& path);
bool writeXmlFile(const tinyxml2::XMLDocument& document, const Path& path);
} // namespace oxa
