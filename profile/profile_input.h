// What commands take as a profile: a report, a saved summary, or a package with its capture.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "byte_source.h"
#include "profile_summary.h"
#include "totals.h"

namespace zan::profile {

// One input, as words of a command line name it.
struct ProfileInput {
    std::string path;    // "-" is standard input
    std::string capture; // of a package; empty for others

    bool is_run() const { return !capture.empty(); }
    // The words again: "design.zanx profile.mon".
    std::string name() const { return is_run() ? path + " " + capture : path; }
    bool operator==(const ProfileInput&) const = default;
};

// Why words are no inputs, or why an input can't be read.
struct InputFault {
    std::string input; // as the user named it
    std::string text;  // "byte 50: a number where a report has a text in quotes"
    bool operator==(const InputFault&) const = default;
};

// A word that ends in "zanx" takes the next one as its capture; each other word is an input by itself.
std::variant<std::vector<ProfileInput>, InputFault> group_inputs(std::span<const std::string> words);

// What the first bytes of a text show it to be.
enum class InputKind { report, summary, package, compressed };
inline constexpr std::size_t num_kind_bytes = 4096;
InputKind kind_of_text(std::string_view beginning);

// What was read. Of a saved summary that alone, of the others their totals.
struct LoadedProfile {
    std::optional<ProfileSummary> saved;
    std::unique_ptr<Totals> totals;
    bool knows_units = false; // from a package
    std::vector<std::pair<std::string, unsigned>> units;
    std::uint64_t num_left_out = 0; // lines of a capture
    std::uint64_t num_lines = 0;
};

struct LoadOptions {
    int compute_unit = 0; // of a package; as RunOptions has it
    // Called now and then with the bytes that have been read of the report or the capture.
    std::function<void(std::uint64_t bytes)> progress;
};

// Reads an input, in bounded memory but for a saved summary, of which 64 MiB are read at most.
std::variant<LoadedProfile, InputFault> load_profile(const ProfileInput& input,
                                                     const LoadOptions& options = {});
// The same from a source that isn't a package.
std::variant<LoadedProfile, InputFault> load_profile(ByteSource& source, const std::string& name,
                                                     const LoadOptions& options = {});

} // namespace zan::profile
