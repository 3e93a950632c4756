// Test entry point for programs that link the plug-in's shared code: JUCE's
// message manager must exist before any element, timer or async channel does.
#include <gtest/gtest.h>
#include <juce_events/juce_events.h>

int main(int argc, char** argv)
{
    juce::ScopedJuceInitialiser_GUI juce;
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
