#pragma once
// The LFO's controls on two pages: rate, depth, delay and feedback, or the shape. The
// LFO settings button picks the page. Rings and legends are in the background.

#include "editor/BoundPanel.h"

namespace oxa
{
class LFOMainMenu : public BoundPanel
{
public:
    explicit LFOMainMenu(EngineProxy* proxy);
};

class LFOEditMenu : public BoundPanel
{
public:
    explicit LFOEditMenu(EngineProxy* proxy);
};

/** Holds both LFO pages and shows one: the shape page while LFO settings are open. */
class LFOModeUI : public juce::Component
{
public:
    explicit LFOModeUI(EngineProxy* proxy);
    ~LFOModeUI() override;

    void setShowEdit(bool show);
    bool isShowingEdit() const { return showEdit; }
    LFOMainMenu& getMainMenu() { return mainMenu; }
    LFOEditMenu& getEditMenu() { return editMenu; }

private:
    LFOMainMenu mainMenu;
    LFOEditMenu editMenu;
    bool showEdit = false;
};

/** Mode panels show each knob's value under it: no bubbles. */
WidgetStyle modePanelStyle();
} // namespace oxa
