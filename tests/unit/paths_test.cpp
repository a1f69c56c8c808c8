#include "platform/paths.h"

#include <gtest/gtest.h>

namespace quillport {
namespace {

TEST(Paths, BothSeparatorsSplitAPath) {
    struct Row {
        const char* path;
        const char* name;
        const char* parent;
    };
    for (const Row& row : {
             Row{"\\home\\op\\a.xml", "a.xml", "\\home\\op"},
             Row{"/ata0a/webfiles/xml\\a.xml", "a.xml", "/ata0a/webfiles/xml"},
             Row{"\\home\\op\\", "", "\\home\\op"},
             Row{"a.xml", "a.xml", ""},
             Row{"\\a.xml", "a.xml", ""},
             Row{"", "", ""},
         }) {
        EXPECT_EQ(paths::fileName(row.path), row.name) << row.path;
        EXPECT_EQ(paths::parentFolder(row.path), row.parent) << row.path;
    }
}

} // namespace
} // namespace quillport
