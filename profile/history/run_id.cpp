// SPDX-License-Identifier: Apache-2.0
// The canonical form is the saved summary without what depends on how the run was read. A package says how
// many compute units there are, so with it sums over a memory may be known to be lower bounds, and what is
// computed from these is missing. Sentences depend on that, and on the rules of the program's version.
#include "run_id.h"

#include <xxhash.h>

#include <cstdio>

#include "summary_json.h"

namespace zan::profile {

namespace {

void drop_shares_and_sentence(BlockSummary& block) {
    block.own_share.reset();
    block.block_share.reset();
    block.read_share.reset();
    block.write_share.reset();
    block.rivals.clear();
    block.innermost = false;
    block.sentence = {};
}

ProfileSummary canonical_form(ProfileSummary summary) {
    summary.input.clear();
    summary.program_version.clear();
    summary.notes.clear();
    summary.answers = {};
    for (KernelSummary& kernel : summary.kernels) {
        kernel.num_units.reset();
        kernel.culprit.clear();
        for (BlockSummary& block : kernel.blocks)
            drop_shares_and_sentence(block);
    }
    for (MemorySummary& memory : summary.memories)
        memory.lower_bound = false;
    return summary;
}

} // namespace

std::string run_id_of(const ProfileSummary& summary) {
    const std::string text = summary_to_json(canonical_form(summary));
    const XXH128_hash_t hash = XXH3_128bits(text.data(), text.size());
    char digits[33];
    std::snprintf(digits, sizeof digits, "%016llx%016llx", static_cast<unsigned long long>(hash.high64),
                  static_cast<unsigned long long>(hash.low64));
    return digits;
}

} // namespace zan::profile
