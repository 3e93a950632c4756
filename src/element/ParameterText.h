#pragma once
// Text forms of parameter values, chosen by the description's displayType code.

#include "element/String.h"

#include <string>

namespace oxa
{
class Element;

/** Plain float value to its display text. Sync display types (4, 6, 8) print the note
    name when the owner syncs to the host. */
String floatValueToText(int displayType, float min, float max, float value, const Element* owner);

/** Parses a display text into a plain float value. For a synced owner and a sync display
    type the result is the note table index, not the length. Returns false when the text
    does not parse; value then holds whatever was parsed. */
bool floatTextToValue(int displayType, float min, float max, const String& text, const Element* owner,
                      float& value);

/** Plain int value to its display text. */
String intValueToText(int displayType, int value);

/** Decimal parse of an int text; false when it does not parse. */
bool intTextToValue(const String& text, int& value);

// The same rules with the sync state already known, on plain std::string. Callers that
// have no element at hand (menus, host text) and the tests use these.
std::string formatFloatValue(int displayType, float min, float max, float value, bool synced);
bool parseFloatText(int displayType, float min, float max, const std::string& text, bool synced, float& value);
std::string formatIntValue(int displayType, int value);
bool parseIntText(const std::string& text, int& value);
} // namespace oxa
