#include "stand-ins/dispatcher/LevelRules.h"

#include <gmock/gmock.h>

namespace {

using kivo::dispatcher::LevelRules;

TEST(DispatcherLevelRules, theLastRuleThatFitsCounts)
{
    LevelRules rules;
    EXPECT_EQ(rules.levelOf("guard.library"), 4U);
    EXPECT_THAT(rules.add("*=3, guard.library = detail,kivo.*.mesk.*=off,*Interface=11"), testing::IsEmpty());
    EXPECT_EQ(rules.levelOf(""), 3U);
    EXPECT_EQ(rules.levelOf("guard.library"), 2U);
    EXPECT_EQ(rules.levelOf("guard.library2"), 3U);
    EXPECT_EQ(rules.levelOf("kivo.core.mesk.Other"), 7U);
    EXPECT_EQ(rules.levelOf("kivo.core.mesk.KivoGbePhysicalNetworkInterface"), 11U);
    EXPECT_EQ(rules.levelOf("InterfaceInterface"), 11U);
}

TEST(DispatcherLevelRules, entriesThatAreNoRuleAreGivenBackAndTheOthersKept)
{
    LevelRules rules;
    EXPECT_THAT(rules.add("loud=9x,=3,nothing,a=,b=-1,c=4294967296,,d=error"),
                testing::ElementsAre("loud=9x", "=3", "nothing", "a=", "b=-1", "c=4294967296"));
    EXPECT_EQ(rules.levelOf("d"), 5U);
    EXPECT_EQ(rules.levelOf("loud"), 4U);
}

} // namespace
