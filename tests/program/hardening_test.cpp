// SPDX-License-Identifier: Apache-2.0
// How the programs were built, as their own ELF files show it.
#include <fcntl.h>
#include <gelf.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <map>
#include <set>
#include <stdexcept>
#include <string>

namespace {

// A program of ELF, read-only. Throws std::runtime_error if it can't be read.
class Elf64File {
  public:
    explicit Elf64File(const char* path) : m_fd(::open(path, O_RDONLY | O_CLOEXEC)) {
        elf_version(EV_CURRENT);
        m_elf = elf_begin(m_fd, ELF_C_READ, nullptr);
        if (!gelf_getehdr(m_elf, &m_header))
            throw std::runtime_error(std::string(path) + ": " + elf_errmsg(-1));
    }
    Elf64File(const Elf64File&) = delete;
    Elf64File& operator=(const Elf64File&) = delete;
    ~Elf64File() {
        elf_end(m_elf);
        ::close(m_fd);
    }

    const GElf_Ehdr& header() const { return m_header; }

    // The flags of the segment of that type; throws std::out_of_range if there is none.
    GElf_Word segment_flags(GElf_Word type) const {
        GElf_Phdr segment;
        for (int i = 0; gelf_getphdr(m_elf, i, &segment); ++i)
            if (segment.p_type == type)
                return segment.p_flags;
        throw std::out_of_range("no segment of this type");
    }

    // The values of the dynamic section, by tag.
    std::map<GElf_Sxword, GElf_Xword> dynamic() const {
        std::map<GElf_Sxword, GElf_Xword> values;
        each_entry(SHT_DYNAMIC, [&](Elf_Data* data, const GElf_Shdr&, int index) {
            GElf_Dyn entry;
            if (!gelf_getdyn(data, index, &entry))
                return false;
            values[entry.d_tag] = entry.d_un.d_val;
            return true;
        });
        return values;
    }

    // Names of the functions that the program takes from libraries.
    std::set<std::string> imports() const {
        std::set<std::string> names;
        each_entry(SHT_DYNSYM, [&](Elf_Data* data, const GElf_Shdr& header, int index) {
            GElf_Sym symbol;
            if (!gelf_getsym(data, index, &symbol))
                return false;
            if (symbol.st_shndx == SHN_UNDEF)
                names.insert(elf_strptr(m_elf, header.sh_link, symbol.st_name));
            return true;
        });
        return names;
    }

  private:
    using Visit = std::function<bool(Elf_Data* data, const GElf_Shdr& header, int index)>;

    // Calls `visit` with growing indices for each section of that type, until it returns false.
    void each_entry(GElf_Word type, const Visit& visit) const {
        GElf_Shdr header;
        for (Elf_Scn* section = nullptr; (section = elf_nextscn(m_elf, section));) {
            if (!gelf_getshdr(section, &header) || header.sh_type != type)
                continue;
            Elf_Data* const data = elf_getdata(section, nullptr);
            for (int index = 0; visit(data, header, index); ++index) {
            }
        }
    }

    int m_fd;
    Elf* m_elf = nullptr;
    GElf_Ehdr m_header{};
};

class HardeningTest : public testing::TestWithParam<const char*> {
  protected:
    const Elf64File program{GetParam()};
};

TEST_P(HardeningTest, TheProgramIsPositionIndependent) {
    EXPECT_EQ(program.header().e_type, ET_DYN); // not ET_EXEC, which has addresses of its own
    EXPECT_EQ(program.dynamic()[DT_FLAGS_1] & DF_1_PIE, DF_1_PIE);
    EXPECT_FALSE(program.dynamic().contains(DT_TEXTREL)); // code that the loader would have to write to
}

TEST_P(HardeningTest, TablesOfFunctionsAreFilledBeforeMainAndReadOnlyThen) {
    EXPECT_NO_THROW(program.segment_flags(PT_GNU_RELRO));
    EXPECT_EQ(program.dynamic()[DT_FLAGS_1] & DF_1_NOW, DF_1_NOW);
}

TEST_P(HardeningTest, TheStackHoldsNoCode) {
    EXPECT_EQ(program.segment_flags(PT_GNU_STACK) & PF_X, 0u);
}

TEST_P(HardeningTest, TheStackIsProtected) {
    EXPECT_TRUE(program.imports().contains("__stack_chk_fail"));
}

TEST_P(HardeningTest, FunctionsOfTheCLibraryAreChecked) {
    if (!ZAN_CHECKED_FUNCTIONS)
        GTEST_SKIP() << "takes an optimized build";
    // One that both programs call, and both compilers check.
    EXPECT_TRUE(program.imports().contains("__vfprintf_chk"));
    EXPECT_FALSE(program.imports().contains("vfprintf"));
}

INSTANTIATE_TEST_SUITE_P(Programs, HardeningTest, testing::Values(ZAN_PROGRAM, ZAN_TOOLBOX),
                         [](const auto& program) {
                             return program.index == 0 ? "zanl_profile_tly" : "zanl_profile";
                         });

} // namespace
