#pragma once
// Plain constants that tell the generic plug-in frame which product it is.

#include <cstdint>
#include <string>
#include <utility>

namespace oxa
{
class PluginDefinition
{
public:
    virtual const char* maker() const = 0;
    virtual const char* makerKey() const = 0;      // the first part of the identifier, "%1" of settings paths
    virtual const char* identifier() const = 0;
    virtual const char* productName() const = 0;
    virtual const char* displayName() const = 0;   // "%2" of settings paths
    virtual const char* presetKind() const = 0;
    virtual const char* version() const = 0;
    virtual uint32_t pluginCode() const = 0;
    virtual bool reserved9() const { return false; }
    virtual const void* reserved10() const { return nullptr; }
    virtual std::string auxBusName(int busNumber) const;
    virtual const uint32_t* auxChannelCounts() const { return nullptr; }
    virtual uint32_t busConfigurationCount() const = 0;
    virtual const std::pair<uint32_t, uint32_t>* busConfigurations() const = 0;
    virtual uint32_t editorWidth() const = 0;
    virtual uint32_t editorHeight() const = 0;
    virtual bool reserved17() const { return false; }
    virtual bool reserved18() const { return false; }
    virtual bool reserved19() const { return false; }
    virtual ~PluginDefinition() = default;

    /** Channel count of aux bus i as the definition gives it (0 without a table). */
    uint32_t auxChannelCount(size_t index) const;

    /** Index of the first configuration matching (inputs, outputs), or the count. */
    uint32_t findBusConfiguration(uint32_t inputs, uint32_t outputs) const;
};

class FluxDeckPluginDefinition final : public PluginDefinition
{
public:
    static const FluxDeckPluginDefinition& instance();

    const char* maker() const override { return "OXA"; }
    const char* makerKey() const override { return key.c_str(); }
    const char* identifier() const override { return "net.oxa.FluxDeck"; }
    const char* productName() const override { return "Flux Deck"; }
    const char* displayName() const override { return "Flux Deck"; }
    const char* presetKind() const override { return "preset"; }
    const char* version() const override { return "1.0.0"; }
    uint32_t pluginCode() const override { return 0x4F587046; }
    uint32_t busConfigurationCount() const override { return 3; }
    const std::pair<uint32_t, uint32_t>* busConfigurations() const override;
    uint32_t editorWidth() const override { return 1130; }
    uint32_t editorHeight() const override { return 656; }

private:
    FluxDeckPluginDefinition();
    std::string key;
};

/** Fills "%1" and "%2" of a settings path pattern from a definition. */
std::string settingsPath(const PluginDefinition& definition, const std::string& pattern);
} // namespace oxa
