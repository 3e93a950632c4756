#pragma once
// A few parameters were stored on another scale by documents older than element version 1.
// The effect declares each such conversion once, by parameter name; everything that reads
// stored values (a saved state, a preset) turns them into today's scale here, so the two
// roads always agree.

namespace tinyxml2
{
class XMLElement;
}

namespace oxa
{
class Element;

namespace LegacyScales
{
using Conversion = float (*)(float stored);

// Declares how documents of version 0 stored a parameter. Meant for the effect's parameter
// table; a second declaration of the same name replaces the first.
void declare(const char* parameterName, Conversion fromVersion0);

// A stored value, already clamped to the parameter's range, on today's scale.
float toCurrent(const char* parameterName, float stored, int version);

// After the element loaded its values from node: converts those the node held on an old
// scale. Values the node did not hold (defaults) stay as they are.
void convertLoaded(Element& element, const tinyxml2::XMLElement& node, int version);
} // namespace LegacyScales
} // namespace oxa
