// SPDX-License-Identifier: Apache-2.0
#include "view_sources.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "failure.h"
#include "made_summary.h"
#include "temp_dir.h"
#include "whole_file.h"

using namespace zan::tool;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ViewSources : public testing::Test {
  protected:
    ViewSources() {
        std::filesystem::create_directories(m_dir.path("src/device"));
        write_file(m_dir.path("outside.cl"), "secret");
    }
    FoundSources find(const std::string& name) const {
        zan::profile::KernelSummary kernel = zan::profile::made::kernel("k", {});
        kernel.source.file = name;
        return find_sources(zan::profile::made::run({kernel}), m_dir.path("src"));
    }
    std::string fault_of(const std::string& name) const {
        const FoundSources found = find(name);
        EXPECT_THAT(found.sources, IsEmpty());
        return found.faults.size() == 1 ? found.faults[0] : "";
    }
    const TempDir m_dir;
};

TEST_F(ViewSources, AFileBelowTheFolderIsShown) {
    write_file(m_dir.path("src/device/a.cl"), "kernel\n");
    const FoundSources found = find("device/a.cl");
    EXPECT_THAT(found.faults, IsEmpty());
    ASSERT_EQ(found.sources.size(), 1U);
    EXPECT_EQ(found.sources[0].name, "device/a.cl");
    EXPECT_EQ(found.sources[0].text, "kernel\n");
}

TEST_F(ViewSources, BytesThatAreNoUtf8AreReplaced) {
    write_file(m_dir.path("src/a.cl"), std::string("\xff\0", 2));
    EXPECT_EQ(find("a.cl").sources.at(0).text, std::string("\xef\xbf\xbd\0", 4));
}

TEST_F(ViewSources, NamesThatLeaveTheFolderAreRefused) {
    std::filesystem::create_symlink("../outside.cl", m_dir.path("src/link.cl"));
    std::filesystem::create_symlink("..", m_dir.path("src/up"));
    const std::string end = " is left out: it is not below the folder";
    EXPECT_EQ(fault_of("../outside.cl"), "the source '../outside.cl'" + end);
    EXPECT_EQ(fault_of("."), "the source '.'" + end);
    EXPECT_EQ(fault_of("device/../.."), "the source 'device/../..'" + end);
    EXPECT_EQ(fault_of("link.cl"), "the source 'link.cl'" + end);
    EXPECT_EQ(fault_of("up/outside.cl"), "the source 'up/outside.cl'" + end);
    EXPECT_EQ(fault_of(m_dir.path("src/a.cl")),
              "the source '" + std::string(m_dir.path("src/a.cl")) + "' is left out: its name is absolute");
}

TEST_F(ViewSources, ALinkThatStaysBelowTheFolderIsFollowed) {
    write_file(m_dir.path("src/device/a.cl"), "x");
    std::filesystem::create_symlink("device/a.cl", m_dir.path("src/link.cl"));
    EXPECT_EQ(find("link.cl").sources.at(0).text, "x");
}

TEST_F(ViewSources, OnlyRegularFilesOfTwoMebibytesAreShown) {
    mkfifo(std::string(m_dir.path("src/pipe.cl")).c_str(), 0600);
    EXPECT_EQ(fault_of("pipe.cl"), "the source 'pipe.cl' is left out: it is no regular file");
    EXPECT_EQ(fault_of("device"), "the source 'device' is left out: it is no regular file");
    write_file(m_dir.path("src/large.cl"), "");
    std::filesystem::resize_file(m_dir.path("src/large.cl"), std::uintmax_t{1} << 30);
    EXPECT_EQ(fault_of("large.cl"), "the source 'large.cl' is left out: it has more than 2 MiB");
    std::filesystem::resize_file(m_dir.path("src/large.cl"), max_source_size);
    EXPECT_EQ(find("large.cl").sources.at(0).text.size(), max_source_size);
}

// A socket can't be opened as a file, by no user.
TEST_F(ViewSources, AFileThatCannotBeOpenedIsNamed) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = m_dir.path("src/socket.cl");
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(fault_of("socket.cl"), "the source 'socket.cl' is left out: No such device or address");
    ::close(socket);
}

TEST_F(ViewSources, AFileThatIsNotThereIsNamed) {
    EXPECT_EQ(fault_of("none.cl"), "the source 'none.cl' is left out: No such file or directory");
    EXPECT_EQ(fault_of(std::string("a\0b", 3)),
              "the source 'a\u27e8U+0000\u27e9b' is left out: no file can have its name");
}

TEST_F(ViewSources, AFolderThatIsNotThereFails) {
    EXPECT_THROW(find_sources(zan::profile::made::run({}), m_dir.path("none")), Failure);
    EXPECT_THROW(find_sources(zan::profile::made::run({}), m_dir.path("outside.cl")), Failure);
}

} // namespace
