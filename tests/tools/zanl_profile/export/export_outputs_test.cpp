// SPDX-License-Identifier: Apache-2.0
#include "export_outputs.h"

#include "failure.h"
#include "toolbox_fixture.h"

namespace {

using namespace zan::tool;
using zan::profile::ExportTable;

using ExportOutputs = Toolbox;

TEST_F(ExportOutputs, TableFilesAppearTogether) {
    {
        TableFiles files(dir.path("out"));
        files.write(ExportTable::sample, "a\r\n");
        EXPECT_FALSE(exists("out"));
        files.write(ExportTable::sample, "b\r\n");
        files.commit();
    }
    const Tree found = tree("out");
    EXPECT_EQ(found.size(), 9u);
    EXPECT_EQ(found.at("sample.csv"), "a\r\nb\r\n");
    EXPECT_EQ(found.at("run.csv"), "");
}

TEST_F(ExportOutputs, WithoutCommitNothingIsLeft) {
    {
        TableFiles files(dir.path("out"));
        const NamedUnfinished file(dir.path("x.db"));
        EXPECT_FALSE(exists("x.db"));
        EXPECT_EQ(tree().count(file.path().substr(dir.path().size() + 1)), 1u);
    }
    EXPECT_EQ(tree(), Tree());
}

TEST_F(ExportOutputs, AFileTakesThePlaceOfAnother) {
    write("x.db", "old");
    NamedUnfinished file(dir.path("x.db"));
    write_file(file.path(), "new");
    EXPECT_EQ(read("x.db"), "old");
    file.commit();
    EXPECT_EQ(tree(), (Tree{{"x.db", "new"}}));
    EXPECT_THROW(NamedUnfinished(dir.path()), Failure);
}

} // namespace
