#pragma once
// The A/B compare of the effect: one stored state, kept as an element property, that a
// press swaps with the state the effect is in. Which memory the button shows is the
// window's business; here is only the swap. Message thread only.
#include "element/String.h"

namespace oxa
{
class Element;

/** The element property that holds the other memory. */
constexpr const char* abStateProperty = "ABFxState";

enum class CompareResult
{
    stored,  // nothing usable was stored: the present state was kept, nothing changed
    swapped  // the stored state is now in force and the former one is stored
};

/** Stores the element's parameters (locked ones too) and its preset names, and brings
    back what was stored before. A stored text that does not read as a state of this
    element is treated as empty: the effect keeps its values. */
CompareResult swapWithStoredState(Element& element);

} // namespace oxa
