#include "plugin/binding/InstallRootWalk.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using kivo::plugin::binding::lengthWithoutTrailingSeparators;
using kivo::plugin::binding::rootLengthAbove;

TEST(InstallRootWalk, theNearestKnownDirectoryAboveTheFileGivesTheRoot)
{
    const struct {
        std::string file, root;
    } cases[] = {
        {"/x/bin/p.so", "/x"},
        {"/x/bin/plugins/p.so", "/x"},
        {"/x/dll/p.so", "/x"},
        {"/x/Gate Modules/p.so", "/x"},
        {"/x/lib/p.so", "/x"},
        {"/x/lib64/p.so", "/x"},
        {"/x/BIN/p.so", "/x"},
        {"/x/gAtE mODULES/p.so", "/x"},
        {"/a/lib/b/bin/p.so", "/a/lib/b"},
        {"/a/bin/bin/p.so", "/a/bin"},
        {"//a//b//bin//p.so", "//a//b"},
        {"/bin/p.so", "/"},
        {"/x/bin2/p.so", ""},
        {"/x/sbin/p.so", ""},
        {"/x/lib32/p.so", ""},
        {"/x/y/bin", ""},
        {"/x/Gate  Modules/p.so", ""},
        {"/p.so", ""},
        {"//p.so", ""},
        {"p.so", ""},
        {"", ""},
        {"/", ""},
        {"a/p.so", ""},
        {"/x/.bin/p.so", ""},
    };
    for (const auto& each : cases)
        EXPECT_EQ(each.file.substr(0, rootLengthAbove(each.file)), each.root) << each.file;
}

TEST(InstallRootWalk, trailingSeparatorsGo)
{
    EXPECT_EQ(lengthWithoutTrailingSeparators("/x/y"), 4U);
    EXPECT_EQ(lengthWithoutTrailingSeparators("/x/y///"), 4U);
    EXPECT_EQ(lengthWithoutTrailingSeparators("//"), 0U);
    EXPECT_EQ(lengthWithoutTrailingSeparators(""), 0U);
}

} // namespace
