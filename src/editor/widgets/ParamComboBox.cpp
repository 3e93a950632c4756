#include "editor/widgets/ParamComboBox.h"

#include "editor/widgets/SimpleEditionSettingsPanel.h"
#include "element/ParameterRegistry.h"

namespace oxa
{
ParamComboBox::ParamComboBox(EngineProxy* proxy, const String& path, uint32_t id)
    : SimpleElementParameterView(proxy, path), gesture(*this)
{
    setParameter(path, id);
}

ParamComboBox::~ParamComboBox() = default;

void ParamComboBox::fillItems()
{
    clear(juce::dontSendNotification);
    const Element* e = getElement();
    if (kind() == ParameterKind::Bool)
    {
        firstValue = 0;
        addItem(boolText(e, resolvedId(), false), 1);
        addItem(boolText(e, resolvedId(), true), 2);
        return;
    }
    const auto* d = ParameterRegistry::instance().intDescription(resolvedId());
    if (d == nullptr || !d->hasRange())
        return;
    firstValue = d->min;
    for (int v = d->min; v <= d->max; ++v)
        addItem(intText(e, resolvedId(), v), v - d->min + 1);
}

void ParamComboBox::elementChanged(const String&)
{
    setEnabled(getElement() != nullptr);
    if (getElement() != nullptr)
        fillItems();
}

void ParamComboBox::intChanged(const String&, unsigned, int value)
{
    setSelectedId(value - firstValue + 1, juce::dontSendNotification);
}

void ParamComboBox::boolChanged(const String&, unsigned, bool value)
{
    setSelectedId(value ? 2 : 1, juce::dontSendNotification);
}

void ParamComboBox::choose(int value)
{
    Element* e = getElement();
    if (e == nullptr)
        return;
    gesture.begin();
    if (kind() == ParameterKind::Bool)
        e->setBoolParameter(resolvedId(), value != 0, true);
    else
        e->setIntParameter(resolvedId(), value, true);
    gesture.end();
    setSelectedId(value - firstValue + 1, juce::dontSendNotification);
}

void ParamComboBox::showPopup()
{
    if (getElement() == nullptr)
        return;
    juce::PopupMenu menu;
    for (int i = 0; i < getNumItems(); ++i)
        menu.addItem(getItemId(i), getItemText(i), true, getItemId(i) == getSelectedId());
    const int itemHeight = int(getProperties().getWithDefault("menuHeight", 0));
    auto options = juce::PopupMenu::Options()
                       .withTargetComponent(this)
                       .withMinimumWidth(getWidth())
                       .withMaximumNumColumns(1)
                       .withStandardItemHeight(itemHeight);
    menu.showMenuAsync(options, [safe = juce::Component::SafePointer<ParamComboBox>(this)](int result) {
        if (safe != nullptr && result != 0)
            safe->choose(safe->valueOfItem(result));
    });
}

void ParamComboBox::mouseDown(const juce::MouseEvent& e)
{
    if (e.mods.isRightButtonDown())
    {
        const bool alt = e.mods.isAltDown();
        if (alt ? openSettingsOnAltRightClick : openSettingsOnRightClick)
            SimpleEditionSettingsPanel::open(*this, getProxy(), getElementPath(), resolvedId(), alt);
        return;
    }
    juce::ComboBox::mouseDown(e);
}
} // namespace oxa
