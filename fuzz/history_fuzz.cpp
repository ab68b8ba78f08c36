// SPDX-License-Identifier: Apache-2.0
// Any bytes as the file of a history: it is read in all ways without a change, then a run is added. A file
// that can't be used stays as it is, and one of an older version is kept before it changes.
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "history_store.h"
#include "temp_dir.h"

namespace {

using namespace zan::profile;

std::string bytes_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void read_history(const std::string& path) {
    try {
        HistoryStore store(path, OpenMode::read, {}, 0);
        const std::vector<HistoryRun> runs = store.list();
        for (const HistoryRun& run : runs) {
            try {
                store.summary(run);
            } catch (const HistoryFault&) { // one that is damaged
            }
        }
        store.find("last");
        for (const std::string& kernel : store.names()) {
            store.names(kernel);
            const TrendLine line = store.trend({kernel, "", Metric::kernel_time, {}, {}});
            if (line.points.size() > runs.size())
                std::abort();
        }
    } catch (const HistoryFault& fault) {
        if (*fault.what() == '\0')
            std::abort();
    }
}

void add_run(const std::string& path, const std::string& before) {
    std::string copy;
    const auto keep = [&](const std::string&, const auto& write) {
        write([&](std::string_view piece) { copy += piece; });
    };
    bool is_open = false;
    try {
        HistoryStore store(path, OpenMode::create, keep, 0);
        is_open = true;
        if (!copy.empty() && copy != before)
            std::abort();
        HistoryEntry entry;
        entry.summary.kernels.resize(1);
        entry.summary.kernels[0].name = "k";
        entry.summary.kernels[0].metrics[Metric::kernel_time] = 5;
        entry.date = "2026-11-22";
        store.add({&entry, 1});
        store.remove(store.find("last"));
    } catch (const HistoryFault&) {
        if (!is_open && bytes_of(path) != before)
            std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TempDir folder;
    static const std::string path = folder.path("runs.db");
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    read_history(path);
    if (bytes_of(path) != bytes)
        std::abort();
    add_run(path, bytes);
    return 0;
}
