#pragma once
// Shapes a control source's value before a connection scales it: separate gains
// for the positive and negative halves, optional steps, optional whole numbers.

#include "element/Element.h"

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace oxa
{
/** Attributes of a saved connection or mapper that this build does not read.
    They are held as text and written back, so a load followed by a save loses nothing. */
class KeptAttributes
{
public:
    /** Keeps every attribute of `node` whose name is not in `known`. Replaces what was kept. */
    void keepUnknown(const tinyxml2::XMLElement* node, std::initializer_list<const char*> known);
    void writeBack(tinyxml2::XMLElement* node) const;
    std::size_t size() const { return attributes_.size(); }

private:
    std::vector<std::pair<std::string, std::string>> attributes_;
};

/** Writes a float the way every element document does ("%.8g"). */
void setFloatAttribute(tinyxml2::XMLElement* node, const char* name, float value);

class ControlSignalMapper : public Element
{
public:
    struct Ids
    {
        uint32_t posRatio, negRatio, discreet, integer;
    };
    static const Ids& ids();
    /** Makes "ControlSignalMapper" known to the element factory; safe to call again. */
    static void registerType();

    explicit ControlSignalMapper(const String& name = String("Mapper"));

    /** The shaped value. Audio thread: no allocation, no lock. */
    float shape(float value) const;

    float posRatio() const { return posRatio_; }
    float negRatio() const { return negRatio_; }
    int discreet() const { return discreet_; }
    bool integer() const { return integer_; }

    void saveXmlAttributes(tinyxml2::XMLElement* node, int& version) override;
    bool loadXmlAttributes(const tinyxml2::XMLElement* node, int version) override;

private:
    void setPosRatio(float v);
    void setNegRatio(float v);
    void setDiscreet(int v);
    void setInteger(bool v);

    float posRatio_ = 1.0f;
    float negRatio_ = 1.0f;
    int discreet_ = 0; // number of steps; below 2 means continuous
    bool integer_ = false;
    KeptAttributes kept_;
};
} // namespace oxa
