// SPDX-License-Identifier: Apache-2.0
#include "sample_choice.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "contract.h"
#include "joined_samples.h"
#include "sample_groups.h"
#include "series_cursor.h"

namespace zan::profile {

namespace {

constexpr std::uint64_t least_group = 4;
constexpr std::uint64_t values_of_group = 3; // least, range, and sum or mean

// Times as the columns have them.
struct Stretch {
    std::int64_t from = std::numeric_limits<std::int64_t>::min();
    std::int64_t to = std::numeric_limits<std::int64_t>::max();
    bool is_whole = true;
};

std::int64_t time_of(const ProfileColumns& profile, double nanoseconds) {
    constexpr double limit = 9e18;
    const double ticks = std::clamp(nanoseconds / *profile.summary.nanoseconds, -limit, limit);
    const std::int64_t start = profile.summary.start.empty() ? 0 : std::stoll(profile.summary.start);
    return wrapped_sum(static_cast<std::int64_t>(ticks), wrapped_difference(start, profile.columns.base()));
}

Stretch stretch_of(const ProfileColumns& profile, const SampleChoice& choice) {
    Stretch stretch;
    if (!choice.from && !choice.to)
        return stretch;
    ZAN_CONTRACT(profile.summary.nanoseconds, "the unit of time is known");
    stretch.is_whole = false;
    if (choice.from)
        stretch.from = time_of(profile, *choice.from);
    if (choice.to)
        stretch.to = time_of(profile, *choice.to);
    return stretch;
}

// The samples of an invocation that lie in the stretch, at least in part.
void keep_stretch(InvocationPart& part, std::int64_t start, const Stretch& stretch, SeriesCursor& time) {
    std::uint64_t keep_begin = part.keep_end;
    std::uint64_t keep_end = part.begin;
    std::int64_t begin = start;
    for (std::uint64_t i = part.keep_begin; i < part.keep_end; ++i) {
        const std::int64_t end = time.units_at(i);
        if (end > stretch.from && begin < stretch.to) {
            keep_begin = std::min(keep_begin, i);
            keep_end = i + 1;
        }
        begin = end;
    }
    part.keep_begin = keep_begin;
    part.keep_end = keep_end;
}

std::vector<InvocationPart> parts_of(KernelColumns& kernel, bool is_chosen, const Stretch& stretch,
                                     const ChunkStore& store) {
    std::vector<InvocationPart> parts;
    const std::vector<InvocationColumn>& invocations = kernel.invocations;
    for (std::size_t i = 0; i < invocations.size(); ++i) {
        const std::uint64_t first = invocations[i].first;
        const std::uint64_t end = i + 1 < invocations.size() ? invocations[i + 1].first : kernel.num_samples;
        parts.push_back({first, first, is_chosen ? end : first});
    }
    if (!is_chosen || stretch.is_whole)
        return parts;
    kernel.time.series.finish();
    SeriesCursor time(&kernel.time.series, store);
    for (std::size_t i = 0; i < parts.size(); ++i)
        keep_stretch(parts[i], invocations[i].start, stretch, time);
    return parts;
}

std::uint64_t num_columns(const KernelColumns& kernel) {
    constexpr std::uint64_t own = 2; // time and cycles
    std::uint64_t count = own + 3 * kernel.ports.size();
    for (const BlockColumns& block : kernel.blocks)
        count += static_cast<std::uint64_t>(
            std::ranges::count_if(block.columns, [](const auto& column) { return column != nullptr; }));
    return count;
}

class Chooser {
  public:
    Chooser(ProfileColumns& profile, const SampleChoice& choice) : m_profile(profile) {
        const Stretch stretch = stretch_of(profile, choice);
        m_is_whole = stretch.is_whole && choice.kernels.empty();
        for (std::size_t i = 0; i < profile.kernel_places.size(); ++i) {
            const bool is_chosen =
                choice.kernels.empty() ||
                std::ranges::find(choice.kernels, profile.summary.kernels[i].name) != choice.kernels.end();
            m_parts.push_back(parts_of(kernel(i), is_chosen, stretch, profile.store));
        }
    }

    // Values of a page whose samples are joined like that.
    std::uint64_t num_values(std::uint64_t group) const {
        std::uint64_t count = 0;
        for (std::size_t i = 0; i < m_parts.size(); ++i)
            count += num_groups(m_parts[i], group) * num_columns(kernel(i));
        return group == 1 ? count : count * values_of_group;
    }
    bool is_whole() const { return m_is_whole; }
    std::uint64_t longest() const {
        std::uint64_t length = 0;
        for (const auto& parts : m_parts) {
            for (const InvocationPart& part : parts)
                length = std::max(length, part.keep_end - std::min(part.keep_end, part.keep_begin));
        }
        return length;
    }
    void join(std::uint64_t group) {
        for (std::size_t i = 0; i < m_parts.size(); ++i) {
            auto& place = m_profile.columns.kernels()[m_profile.kernel_places[i]];
            place = joined_samples(*place, m_parts[i], group, m_profile.store);
        }
    }

  private:
    KernelColumns& kernel(std::size_t number) const {
        return *m_profile.columns.kernels()[m_profile.kernel_places[number]];
    }

    ProfileColumns& m_profile;
    std::vector<std::vector<InvocationPart>> m_parts; // of each kernel of the summary
    bool m_is_whole = true;
};

} // namespace

bool choose_samples(ProfileColumns& profile, const SampleChoice& choice) {
    Chooser chooser(profile, choice);
    std::uint64_t group = 1;
    if (choice.limit != 0 && chooser.num_values(1) > choice.limit) {
        const std::uint64_t longest = chooser.longest();
        for (group = least_group; chooser.num_values(group) > choice.limit && group < longest;)
            group *= 2;
    }
    profile.group = group;
    if (group != 1 || !chooser.is_whole())
        chooser.join(group);
    return choice.limit == 0 || chooser.num_values(group) <= choice.limit;
}

} // namespace zan::profile
