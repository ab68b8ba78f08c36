// SPDX-License-Identifier: Apache-2.0
// Documents that fuzz targets make of their input.
#pragma once

#include <cstddef>
#include <cstdint>

#include "report_tree.h"

// A report whose keys, texts, arrays and shape the input decides; every input makes one.
ptree make_document(const std::uint8_t* data, std::size_t size);
