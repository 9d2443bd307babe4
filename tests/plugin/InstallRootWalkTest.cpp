#include "plugin/binding/InstallRootWalk.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

using kivo::plugin::binding::lengthWithoutTrailingSeparators;
using kivo::plugin::binding::rootLengthAbove;

TEST(InstallRootWalk, theNearestKnownDirectoryAboveTheFileGivesTheRoot)
{
    const std::map<std::string, std::vector<std::string>> filesByRoot{
        {"/x",
         {"/x/bin/p.so", "/x/bin/plugins/p.so", "/x/dll/p.so", "/x/Gate Modules/p.so", "/x/lib/p.so",
          "/x/lib64/p.so", "/x/BIN/p.so", "/x/gAtE mODULES/p.so"}},
        {"/a/lib/b", {"/a/lib/b/bin/p.so"}},
        {"/a/bin", {"/a/bin/bin/p.so"}},
        {"//a//b", {"//a//b//bin//p.so"}},
        {"/", {"/bin/p.so"}},
        {"",
         {"/x/bin2/p.so", "/x/sbin/p.so", "/x/lib32/p.so", "/x/y/bin", "/x/Gate  Modules/p.so", "/p.so",
          "//p.so", "p.so", "", "/", "a/p.so", "/x/.bin/p.so"}},
    };
    for (const auto& [root, files] : filesByRoot)
        for (const std::string& file : files)
            EXPECT_EQ(file.substr(0, rootLengthAbove(file)), root) << file;
}

TEST(InstallRootWalk, trailingSeparatorsGo)
{
    for (const auto& [path, length] : {std::pair("/x/y", 4U), {"/x/y///", 4U}, {"//", 0U}, {"", 0U}})
        EXPECT_EQ(lengthWithoutTrailingSeparators(path), length) << path;
}

} // namespace
