// SPDX-License-Identifier: Apache-2.0
// Uses of the package functions by callers that close what they open.
#pragma once

#include <functional>
#include <string>
#include <vector>

// `work` returns whether all of it went well.
struct PackageUse {
    std::string name;
    std::function<bool()> work;
};

// In a folder with the package p.zanx of one section "a", the files f and empty, the folder d, and the stream
// s of it.
const std::vector<PackageUse>& package_uses();

// How many files the process has open.
int num_open_files();
