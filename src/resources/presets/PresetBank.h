#pragma once
// A bank of ".fxps" module presets for one element: the factory folder in the
// archive, the user's folder on disk, and the element property that names the
// preset last loaded or saved. Loading, saving, listing and stepping through
// presets live here, free of any window, so that the editor's preset bars,
// the tools and the tests share one implementation.
//
// A preset file is a "ModulePreset" root whose first child is the element as
// it saves itself. Runs on the message thread.
#include "element/String.h"
#include "resources/Path.h"

#include <memory>
#include <vector>

namespace tinyxml2
{
class XMLElement;
}

namespace oxa
{
class Element;

class PresetBank
{
public:
    static constexpr const char* extension = ".fxps";
    static constexpr const char* rootTag = "ModulePreset";

    PresetBank(const String& propertyKey, const Path& factoryRoot, const Path& userRoot);
    virtual ~PresetBank();

    // The element is held weakly: after a state load replaces the tree, the
    // owner binds the new element; until then loads and saves fail.
    void bind(const std::shared_ptr<Element>& element);
    std::shared_ptr<Element> element() const { return element_.lock(); }

    // False when nothing is bound, the file does not read as XML, the root or
    // the element's tag is wrong, or there is no child. The element is then unchanged.
    bool loadPreset(const Path& path);
    // Applies the values of a newly made element of the same type, as a preset
    // with no file: the property is emptied, locked parameters stay.
    bool loadDefaults();

    // Writes every attribute of the element to `chosen` (".fxps" added when
    // missing), creating the user folder first. On success the property names
    // the file; a failed save leaves the property alone.
    bool savePreset(const Path& chosen);
    // By default a successful save also clears the element's modified flag.
    void setClearsModifiedOnSave(bool clears) { clearsModifiedOnSave_ = clears; }

    // Every preset file: factory folders, then the user's, each folder's
    // entries in name order. A folder that does not exist lists nothing.
    std::vector<Path> listPresets() const;
    // The preset `step` places away from `current` in the listing, wrapping at
    // the ends; from a preset not in the listing, the first (or the last when
    // stepping back). Empty when there is no preset at all.
    Path stepFrom(const Path& current, int step) const;
    // What the property names now, empty when nothing was loaded or saved.
    Path currentPreset() const;

    const String propertyKey;
    const Path factoryRoot;
    const Path userRoot;

protected:
    // Writes the preset's values into the element. `version` is the file's
    // "<type>Version", 0 when absent.
    virtual bool applyPreset(Element& element, tinyxml2::XMLElement& node, int version, const Path& path) = 0;

    // Whether the file's element is of this element's type.
    static bool tagMatches(const Element& element, const tinyxml2::XMLElement& node);

private:
    std::weak_ptr<Element> element_;
    bool clearsModifiedOnSave_ = true;
};

// The whole effect: every persistent parameter but the locked ones; the
// element's name and bypass stay. Forgets which tape preset was applied.
class FullPresetBank : public PresetBank
{
public:
    FullPresetBank(const Path& factoryRoot, const Path& userRoot);
    // The plug-in's own folders.
    FullPresetBank();

protected:
    bool applyPreset(Element& element, tinyxml2::XMLElement& node, int version, const Path& path) override;
};

// Only the parameters that describe the tape machine; mix, delay, LFO, gains
// and gate stay as they are.
class TapePresetBank : public PresetBank
{
public:
    TapePresetBank(const Path& factoryRoot, const Path& userRoot);
    TapePresetBank();

    // The names a tape preset sets, in the order they are applied.
    static const std::vector<const char*>& tapeParameterNames();

protected:
    bool applyPreset(Element& element, tinyxml2::XMLElement& node, int version, const Path& path) override;
};

// The parameters that "Unlock all" releases, and that release itself.
const std::vector<const char*>& lockableParameterNames();
void unlockAll(Element& element);

} // namespace oxa
