// SPDX-License-Identifier: Apache-2.0
#include "value_kinds.h"

#include <string_view>

#include "metric_table.h"

namespace zan::tool {

namespace {

struct ValueRow {
    std::string_view command; // and those below it; empty: all
    std::string_view label;
    std::string_view kind;
};

// The first row that fits counts. A new label of the help is a row here.
constexpr ValueRow value_rows[] = {
    {"export", "FORMAT", "words:csv,sqlite,perfetto"},
    {"export", "OUT", "files"},
    {"package pack", "OUT", "files"},
    {"package", "FILE", "files:zanx"},
    {"package", "A", "files:zanx"},
    {"package", "B", "files:zanx"},
    {"package", "OUT", "files:zanx"},
    {"view", "FILE", "files:html"},
    {"history trend", "FILE", "files:html"},
    {"history", "FILE", "files"},
    {"", "BASE", "text"},
    {"", "COMMAND", "command"},
    {"", "DATE", "text"},
    {"", "DB", "files:db"},
    {"", "DESIGN", "files:zanx"},
    {"", "DIR", "files"},
    {"", "FOLDER", "files"},
    {"", "FORMAT", "words:text,markdown,json"},
    {"", "HOW", "words:name,source"},
    {"", "INPUT", "files:json,zanx,mon"},
    {"", "LIMIT", "text"},
    {"", "N", "text"},
    {"", "N|all", "words:all"},
    {"", "NAME", "text"},
    {"", "NAME=FILE", "section_file"},
    {"", "NAME=VALUE", "text"},
    {"", "NEW", "text"},
    {"", "PROFILE", "files:mon"},
    {"", "REPORT", "files:json"},
    {"", "RULE", "text"},
    {"", "RUN", "text"},
    {"", "SECTION", "section"},
    {"", "SHELL", "words:bash,zsh,fish"},
    {"", "STREAM", "files"},
    {"", "TIME", "text"},
    {"", "TIME", "text"},
    {"", "UNIT", "words:ns,us,ms,s"},
    {"", "WHEN", "words:auto,always,never"},
};

bool is_below(std::string_view command, std::string_view other) {
    if (other.empty() || command == other)
        return true;
    return command.starts_with(other) && command[other.size()] == ' ';
}

// Of blocks, or also of kernels.
std::string words_of_metrics(bool with_kernels) {
    using profile::MetricScope;
    std::string kind = "words:";
    for (const profile::MetricRow& row : profile::metric_table()) {
        if (row.scope == MetricScope::block || (with_kernels && row.scope == MetricScope::kernel))
            kind += std::string(row.name) + ",";
    }
    kind.pop_back();
    return kind;
}

} // namespace

std::string kind_of_value(const std::string& command, const std::string& label) {
    if (label == "METRIC")
        return words_of_metrics(is_below(command, "history"));
    for (const ValueRow& row : value_rows) {
        if (row.label == label && is_below(command, row.command))
            return std::string(row.kind);
    }
    return "unknown";
}

} // namespace zan::tool
