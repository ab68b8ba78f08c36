// SPDX-License-Identifier: Apache-2.0
// Texts inside quotes, as the report has them.
#pragma once

#include <string_view>

#include "text_buffer.h"

// Appends the text in quotes. Quotes, backslashes and slashes, bytes below 0x20 and those from 0x80 up are
// escaped: the latter each as a code point of its own, whatever the encoding of the text.
void append_quoted(TextBuffer& out, std::string_view text);
