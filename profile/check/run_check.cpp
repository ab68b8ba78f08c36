// SPDX-License-Identifier: Apache-2.0
#include "run_check.h"

#include "capture_check.h"
#include "design_check.h"
#include "run_reader.h"
#include "sample_check.h"

namespace zan::profile {

namespace {

class RunCheck final : public RunObserver, public FaultReceiver {
  public:
    RunCheck(const std::string& package, const std::string& capture, CheckResult& result)
        : m_package(package), m_result(result), m_capture(capture, result.log) {}

    void take_design(const ProfileModel& model, const std::string& clock) override {
        check_design(model, clock, m_package, m_result.log);
        m_capture.take_design(model);
        m_samples.take_design(model, clock);
    }
    void take_line(std::uint64_t number, std::string_view text) override {
        m_capture.take_line(number, text);
    }
    void take_end(bool has_newline) override { m_capture.take_end(has_newline); }

    // The name of a kind is the code of its finding, but for those that another check knows more of.
    void take(const Fault& fault) override {
        const bool is_of_capture = fault.section.empty() && fault.file != m_package;
        switch (fault.kind) {
            case FaultKind::package_unreadable:
            case FaultKind::capture_unreadable:
                m_result.trouble = place_of(logged(fault)) + ": " + std::string(fault.message);
                return;
            case FaultKind::no_width: // of blocks that need none, too
                return;
            case FaultKind::bad_counter:
                if (m_capture.has_other_counters())
                    return;
                break;
            default:
                break;
        }
        if (!is_of_capture || !m_capture.is_compressed())
            m_result.log.add(name_of(fault.kind), fault);
    }

    ReportSink& samples() { return m_samples; }
    void finish(std::string_view capture) { m_samples.finish(m_package, capture, m_result.log); }

  private:
    const std::string& m_package;
    CheckResult& m_result;
    CaptureCheck m_capture;
    SampleCheck m_samples;
};

} // namespace

CheckResult check_run(const std::string& package, const std::optional<std::string>& capture,
                      const std::function<void(std::uint64_t bytes)>& progress) {
    CheckResult result;
    const std::string capture_name = capture.value_or("");
    RunCheck check(package, capture_name, result);
    if (!capture) {
        read_design(package, check, check);
        return result;
    }
    RunOptions options;
    options.progress = progress;
    options.observer = &check;
    const RunResult run = read_run(package, capture_name, options, check.samples(), check);
    result.num_lines = run.num_lines;
    check.finish(capture_name);
    return result;
}

} // namespace zan::profile
