#include "design.h"

#include <malloc.h>

#include <array>
#include <random>
#include <stdexcept>

Design::Design(int num_insts) {
    const std::string name = "kernel_of_" + std::to_string(num_insts);
    auto* made = kernels[name] = new TlyKernel(name);
    int offset = first_counter_field;
    for (int i = 0; i < num_insts; ++i) {
        m_insts.push_back(std::make_unique<TlyModuleInst>("load_" + std::to_string(i), "lsu", name,
                                                          "__global", "read", "BURST-COALESCED", "DDR", "512",
                                                          "", false, 1, false));
        TlyModuleInst& inst = *m_insts.back();
        inst.setFmax(240.5f);
        for (const char* tag : {i == 0 ? "clock" : "totalreq", "memorystalls", "bandwidth"})
            inst.addPortTag(tag, offset++, 0);
        made->add_module_inst(&inst);
    }
    m_num_counters = offset - first_counter_field;
    tree.put("kernels.nodes", "");
    tree.put("memtransfers.nodes", "");
}

Design::~Design() {
    dismantle(tree);
    for (const auto& [name, made] : kernels)
        delete made;
}

std::string Design::monitor_text(int num_lines) const {
    std::mt19937 random(1);
    constexpr std::array<unsigned, 4> bounds = {10, 1000, 1000000, 1000000000};
    const std::string& name = kernels.begin()->first;
    std::string text;
    for (int line = 0; line < num_lines; ++line) {
        text += "0,1," + name + ",1000," + std::to_string(1000 + 500 * line) + ",-1," +
                std::to_string(m_num_counters);
        for (int counter = 0; counter < m_num_counters; ++counter)
            text += "," + std::to_string(random() % bounds[random() % bounds.size()]);
        text += "\n";
    }
    return text;
}

void Design::read(const std::string& path) {
    if (parseProfilerMONFile(&kernels, &tree, path, {}, ext_mems, false) != 0)
        throw std::runtime_error("cannot read " + path);
}

void Design::reset() {
    kernel().resetKernel();
    dismantle(tree.get_child("kernels.nodes"));
}

std::ptrdiff_t HeldBytes::heap_bytes() {
    const auto info = mallinfo2();
    return static_cast<std::ptrdiff_t>(info.uordblks + info.hblkhd);
}
