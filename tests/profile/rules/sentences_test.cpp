// SPDX-License-Identifier: Apache-2.0
// What is said of the samples and of runs as real ones are: nothing that their pages or their design call
// wrong.
#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include "inputs.h"
#include "pipeline.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::profile;

using RuleOfBlock = std::map<std::string, std::string>; // "kernel/block" to the name of its rule

RuleOfBlock rules_of(const ProfileSummary& summary) {
    RuleOfBlock rules;
    for (const KernelSummary& kernel : summary.kernels) {
        for (const BlockSummary& block : kernel.blocks)
            rules[kernel.name + "/" + block.name] = block.sentence.rule;
    }
    return rules;
}

ProfileSummary summary_of(const std::vector<Input>& inputs) {
    auto result = summarize_inputs(inputs, {});
    if (const auto* fault = std::get_if<InputFault>(&result)) {
        ADD_FAILURE() << fault->text;
        return {};
    }
    return std::get<ProfileSummary>(std::move(result));
}

ProfileSummary diagnosed_sample(const std::string& sample) {
    return summary_of({{std::string(ZAN_SAMPLES_FOLDER) + "/" + sample + "/expected_report.json", ""}});
}

struct PipelineRun {
    explicit PipelineRun(const Pipeline& pipeline) {
        make_package(folder.path("design.zanx"), sections_of(pipeline));
        std::ofstream capture(folder.path("profile.mon"));
        write_monitor(pipeline, capture);
        capture.close();
        summary = summary_of({{folder.path("design.zanx"), folder.path("profile.mon")}});
    }
    TempDir folder;
    ProfileSummary summary;
};

} // namespace

TEST(Sentences, OfTheSamplesSayWhatTheirPagesSay) {
    // autorun: both ends of channels work nearly all of the time.
    EXPECT_EQ(rules_of(diagnosed_sample("autorun")), (RuleOfBlock{{"clip/read_in", "working"},
                                                                  {"offset/write_out", "working"},
                                                                  {"scale/forever", "loop-full"}}));
    // channel: the consumer is the slow one, so the producer waits. Outside of its stalls the channel
    // holds 6.9 of 16 words: ((8005 + 7000 + ...) - stalls · 16) / requests.
    EXPECT_EQ(rules_of(diagnosed_sample("channel")),
              (RuleOfBlock{{"producer/write_numbers", "write-bursts"}, {"consumer/read_numbers", "little"}}));
    // compute_units, inlined_calls: no counter of stalls.
    EXPECT_EQ(rules_of(diagnosed_sample("compute_units")),
              (RuleOfBlock{{"histogram/load_bytes", "uncounted"}}));
    EXPECT_EQ(rules_of(diagnosed_sample("inlined_calls")),
              (RuleOfBlock{{"blur/load_pixel", "uncounted"}, {"blur/store_pixel", "uncounted"}}));
    // image_pipeline: 12,533 and 12,267 MB/s of the 64 B · 250 MHz = 16,000 that a port can carry.
    EXPECT_EQ(rules_of(diagnosed_sample("image_pipeline")),
              (RuleOfBlock{{"reader/load_pixels", "port-full"},
                           {"reader/rows", "loop-behind-stall"},
                           {"reader/send_pixels", "little"},
                           {"writer/store_pixels", "port-full"},
                           {"blur/recv_pixels", "little"},
                           {"threshold/forever", "uncounted"}}));
    // kernel_names: 80% and 100% of the cycles begin an iteration.
    EXPECT_EQ(rules_of(diagnosed_sample("kernel_names")),
              (RuleOfBlock{{"Scale, 32-bit float/elements", "loop-full"}, {"clear/elements", "loop-full"}}));
    // load_store_units: three quarters of what load_value brings are thrown away; all requests of load_weight
    // hit the cache in the second sample. It doesn't name its memory, so how busy DDR is isn't known.
    EXPECT_EQ(rules_of(diagnosed_sample("load_store_units")),
              (RuleOfBlock{{"gather/load_index", "mem-unknown"},
                           {"gather/load_value", "waste"},
                           {"gather/load_weight", "cached"},
                           {"gather/store_sum", "little"}}));
    // loop: columns lies in rows. There are no stalls to count.
    EXPECT_EQ(rules_of(diagnosed_sample("loop")),
              (RuleOfBlock{{"row_sums/rows", "loop-outer"}, {"row_sums/columns", "uncounted"}}));
    // shared_counters: four runs together. The block doesn't name its memory.
    EXPECT_EQ(rules_of(diagnosed_sample("shared_counters")),
              (RuleOfBlock{{"store_stream/read_stream", "slow-writer"},
                           {"store_stream/store_out", "mem-unknown"}}));
    // vector_add: no ports are counted.
    EXPECT_EQ(rules_of(diagnosed_sample("vector_add")),
              (RuleOfBlock{{"vector_add/load_a", "port-unknown"},
                           {"vector_add/load_b", "port-unknown"},
                           {"vector_add/store_c", "port-unknown"}}));
}

TEST(Sentences, OfThePipelineNameWhatWasBuiltIn) {
    const PipelineRun run({});
    const Answers& answers = run.summary.answers;
    EXPECT_EQ(answers.leading_kernel, "track");
    EXPECT_EQ(answers.culprit_kernel, "track");
    EXPECT_EQ(answers.memory, "How it is used, not its peak");
    for (const KernelSummary& kernel : run.summary.kernels) {
        for (const BlockSummary& block : kernel.blocks) {
            const std::string& rule = block.sentence.rule;
            SCOPED_TRACE(kernel.name + "/" + block.name + ": " + block.sentence.text);
            // meter's loop is the only one that is slow by itself, and only track reads unaligned.
            EXPECT_EQ(rule == "loop-interval", kernel.name == "meter" && kernel.culprit == block.name);
            EXPECT_TRUE(rule != "unaligned" || kernel.name == "track");
            // HBM is never full, and is used by no kernel while it runs but by one.
            EXPECT_TRUE(block.memory != "HBM" || (!rule.starts_with("mem-") && rule != "turnaround"));
            // What runs by itself has no stalls of its own making.
            EXPECT_NE(rule, "unmeasured");
            EXPECT_NE(rule, "uncounted");
        }
    }
}

TEST(Sentences, OfThePipelinesNextVersionDropTheReason) {
    Pipeline pipeline;
    pipeline.aligned = true;
    const PipelineRun run(pipeline);
    for (const auto& [block, rule] : rules_of(run.summary)) {
        EXPECT_NE(rule, "unaligned") << block;
        EXPECT_NE(rule, "short-bursts") << block;
    }
}
