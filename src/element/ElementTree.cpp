// The tree side of Element: paths, children, aliases, mappers, properties,
// modified flags and errors.
#include "element/Element.h"

#include <algorithm>

namespace oxa
{
namespace
{
// Guards against alias cycles, which would otherwise never end.
constexpr int maxAliasSteps = 256;

String joinPath(const String& head, const String& tail)
{
    if (tail.isEmpty())
        return head;
    if (head.isEmpty())
        return tail;
    if (head.endsWith("/") || tail.startsWith("/"))
        return head + tail;
    return head + "/" + tail;
}
} // namespace

// ---- tree ------------------------------------------------------------------------

std::recursive_mutex& Element::lock()
{
    if (parent_ != nullptr)
        return parent_->lock();
    static std::recursive_mutex* rootLock = new std::recursive_mutex;
    return *rootLock;
}

void Element::setParent(Element* parent) { parent_ = parent; }

Element* Element::root()
{
    Element* e = this;
    while (e->parent_ != nullptr)
        e = e->parent_;
    return e;
}

Engine* Element::engine() { return parent_ != nullptr ? parent_->engine() : nullptr; }

RenderContext* Element::renderContext() { return parent_ != nullptr ? parent_->renderContext() : nullptr; }

String Element::path() const
{
    // The root contributes no name, so a child of the root reads "/Name".
    if (parent_ == nullptr)
        return {};
    String built = name_.text();
    for (const Element* ancestor = parent_; ancestor != nullptr; ancestor = ancestor->parent_)
        built = (ancestor->parent_ == nullptr ? String() : ancestor->name_.text()) + "/" + built;
    return built;
}

String Element::uniqueChildName(const String& base, int start)
{
    for (int n = start;; ++n)
    {
        String candidate = base + String::fromInt(n);
        if (findElement(candidate) == nullptr)
            return candidate;
    }
}

std::vector<std::shared_ptr<Element>>::iterator Element::lowerBoundByName(const String& name)
{
    return std::lower_bound(children_.begin(), children_.end(), name,
                            [](const std::shared_ptr<Element>& child, const String& n) {
                                return child->name_.text().compare(n) < 0;
                            });
}

Element* Element::findElementInternal(const String& name)
{
    auto it = lowerBoundByName(name);
    if (it != children_.end() && (*it)->name_.text() == name)
        return it->get();
    return nullptr;
}

Element* Element::findElement(const String& pathText)
{
    String path = pathText;
    if (extras_)
    {
        for (int step = 0; step < maxAliasSteps; ++step)
        {
            auto alias = extras_->aliases.find(path);
            if (alias == extras_->aliases.end())
                break;
            path = alias->second;
        }
    }

    if (Element* child = findElementInternal(path))
        return child;
    if (!path.contains("/") && !path.startsWith("$"))
        return nullptr;

    Element* current = this;
    if (path.startsWith("/"))
    {
        current = root();
        path = path.substring(1);
    }
    if (path.startsWith("$"))
    {
        const auto slash = path.find('/');
        const String typeName = path.substring(1, slash ? *slash - 1 : std::string::npos);
        Element* match = current;
        while (match != nullptr && match->typeName_.text() != typeName)
            match = match->parent_;
        if (match == nullptr)
            return nullptr;
        if (!slash || *slash + 1 >= path.length())
            return match;
        current = match;
        path = path.substring(*slash + 1);
    }

    std::size_t start = 0;
    const std::string& text = path.str();
    while (current != nullptr && start <= text.size())
    {
        std::size_t end = text.find('/', start);
        if (end == std::string::npos)
            end = text.size();
        const String segment(text.data() + start, end - start);
        start = end + 1;
        if (segment.isEmpty() || segment == ".")
            continue;
        if (segment == "..")
            current = current->parent_;
        else
            current = current->findElement(segment);
    }
    return current;
}

void Element::findElements(const String& pattern, std::vector<Element*>& out)
{
    if (!pattern.contains("/"))
    {
        String resolved = pattern;
        if (extras_)
        {
            for (int step = 0; step < maxAliasSteps; ++step)
            {
                auto alias = extras_->aliases.find(resolved);
                if (alias == extras_->aliases.end())
                    break;
                resolved = alias->second;
            }
        }
        for (auto& child : children_)
            if (wildcardMatch(resolved, child->name_.text()))
                out.push_back(child.get());
        return;
    }

    Element* start = this;
    String rest = pattern;
    if (rest.startsWith("/"))
    {
        start = root();
        rest = rest.substring(1);
        if (rest.isEmpty())
        {
            out.push_back(start);
            return;
        }
        if (!rest.contains("/"))
        {
            start->findElements(rest, out);
            return;
        }
    }

    const auto slash = rest.find('/');
    const String head = rest.substring(0, *slash);
    const String tail = rest.substring(*slash + 1);

    auto descend = [&](Element* next) {
        if (next == nullptr)
            return;
        if (tail.isEmpty())
            out.push_back(next);
        else
            next->findElements(tail, out);
    };

    if (head == "..")
        descend(start->parent_);
    else if (head == "." || head.isEmpty())
        descend(start);
    else if (head.containsAnyOf("*?[]{}"))
    {
        for (auto& child : start->children_)
            if (wildcardMatch(head, child->name_.text()))
                descend(child.get());
    }
    else
        descend(start->findElement(head));
}

void Element::addChild(const std::shared_ptr<Element>& child)
{
    if (!child)
        return;
    // after any equal names, so equal names keep insertion order
    auto at = std::upper_bound(children_.begin(), children_.end(), child->name_.text(),
                               [](const String& n, const std::shared_ptr<Element>& c) {
                                   return n.compare(c->name_.text()) < 0;
                               });
    children_.insert(at, child);
    child->setParent(this);
    child->flushErrors();
    if (ElementSignals* s = signals_.load())
        s->childAdded(this, child.get());
    setModified();
}

void Element::replaceChild(const std::shared_ptr<Element>& child)
{
    if (!child)
        return;
    auto it = lowerBoundByName(child->name_.text());
    if (it == children_.end() || (*it)->name_.text() != child->name_.text())
    {
        addChild(child);
        return;
    }
    std::shared_ptr<Element> old = *it;
    *it = child;
    if (old.use_count() > 1 && old != child)
        old->setParent(nullptr);
    child->setParent(this);
    child->flushErrors();
    if (ElementSignals* s = signals_.load())
    {
        s->childRemoved(this, old.get());
        s->childAdded(this, child.get());
    }
    setModified();
}

void Element::removeChild(Element* child)
{
    if (child == nullptr)
        return;
    auto it = lowerBoundByName(child->name_.text());
    while (it != children_.end() && it->get() != child && (*it)->name_.text() == child->name_.text())
        ++it;
    if (it == children_.end() || it->get() != child)
        return;
    std::shared_ptr<Element> keep = *it; // alive until the signal has been told
    if (keep.use_count() > 2)
        keep->setParent(nullptr);
    children_.erase(it);
    if (ElementSignals* s = signals_.load())
        s->childRemoved(this, keep.get());
    setModified();
}

void Element::setAlias(const String& name, const String& target)
{
    auto& aliases = extras().aliases;
    const bool existed = aliases.count(name) != 0;
    aliases[name] = target;
    if (ElementSignals* s = signals_.load())
    {
        if (existed)
            s->aliasChanged(this, name);
        else
            s->aliasAdded(this, name);
    }
}

bool Element::hasAlias(const String& name) const { return extras_ && extras_->aliases.count(name) != 0; }

// ---- mappers ---------------------------------------------------------------------

void Element::addMapperEntry(const std::shared_ptr<ControlSignalMapper>& mapper, Element* element)
{
    if (!mapper)
        return;
    if (element != nullptr && element->name().isEmpty())
        element->setName(uniqueChildName("Mapper ", 0));
    auto& e = extras();
    e.mappers.push_back({mapper, element});
    e.mapperAdded(this, mapper.get());
}

void Element::removeMapper(ControlSignalMapper* mapper)
{
    if (!extras_)
        return;
    auto& list = extras_->mappers;
    auto it = std::find_if(list.begin(), list.end(), [&](const auto& entry) { return entry.mapper.get() == mapper; });
    if (it == list.end())
        return;
    auto keep = it->mapper;
    list.erase(it);
    extras_->mapperRemoved(this, keep.get());
}

void Element::clearMappers()
{
    if (!extras_)
        return;
    auto list = std::move(extras_->mappers);
    extras_->mappers.clear();
    for (auto& entry : list)
        extras_->mapperRemoved(this, entry.mapper.get());
}

ControlSignalMapper* Element::findMapper(const String& name) const
{
    for (const Element* e = this; e != nullptr; e = e->parent_)
        if (e->extras_)
            for (auto& entry : e->extras_->mappers)
                if (entry.element != nullptr && entry.element->name().text() == name)
                    return entry.mapper.get();
    return nullptr;
}

// ---- properties ------------------------------------------------------------------

bool Element::hasProperty(const String& key) const { return extras_ && extras_->properties.count(key) != 0; }

ElementProperty Element::property(const String& key) const
{
    if (!extras_)
        return {};
    auto found = extras_->properties.find(key);
    return found == extras_->properties.end() ? ElementProperty() : found->second;
}

void Element::setProperty(const String& key, const ElementProperty& value)
{
    extras().properties[key] = value;
    if (ElementSignals* s = signals_.load())
        s->propertyChanged(key, value);
}

void Element::setProperty(const String& key, const String& value, bool isPersistent)
{
    setProperty(key, ElementProperty(value, isPersistent));
}

bool Element::removeProperty(const String& key)
{
    if (!extras_ || extras_->properties.erase(key) == 0)
        return false;
    if (ElementSignals* s = signals_.load())
        s->propertyChanged(key, ElementProperty());
    return true;
}

bool Element::isParameterLocked(uint32_t id) const
{
    ParameterInfoBase* info = findInfo(id);
    return info != nullptr && property(info->name() + "Locked").asBool();
}

void Element::setParameterLocked(uint32_t id, bool locked)
{
    if (ParameterInfoBase* info = findInfo(id))
        setProperty(info->name() + "Locked", locked ? "1" : "0");
}

// ---- modified flags --------------------------------------------------------------

void Element::setModified()
{
    for (Element* e = this; e != nullptr; e = e->parent_)
    {
        if ((e->flags_.fetch_or(IsModified) & IsModified) != 0)
            continue;
        if (ElementSignals* s = e->signals_.load())
            s->modifiedChanged(e);
    }
}

void Element::clearModified()
{
    if ((flags_.fetch_and(static_cast<uint8_t>(~IsModified)) & IsModified) == 0)
        return;
    if (ElementSignals* s = signals_.load())
        s->modifiedChanged(this);
}

void Element::setSaved(bool saved)
{
    if (saved)
        flags_.fetch_or(IsSaved);
    else
        flags_.fetch_and(static_cast<uint8_t>(~IsSaved));
}

// ---- errors ----------------------------------------------------------------------

void Element::reportError(std::unique_ptr<Error> error)
{
    if (!error)
        return;
    if (parent_ != nullptr)
    {
        error->sourcePath = joinPath(name_.text(), error->sourcePath);
        parent_->reportError(std::move(error));
        return;
    }
    extras().errors.push_back(std::move(error));
}

void Element::reportError(const String& message, const String& context)
{
    auto error = std::make_unique<Error>();
    error->message = message;
    error->context = context;
    reportError(std::move(error));
}

void Element::flushErrors()
{
    if (parent_ == nullptr || !extras_ || extras_->errors.empty())
        return;
    auto queued = std::move(extras_->errors);
    extras_->errors.clear();
    for (auto& error : queued)
    {
        error->sourcePath = joinPath(name_.text(), error->sourcePath);
        parent_->reportError(std::move(error));
    }
}

} // namespace oxa
