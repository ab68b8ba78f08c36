// SPDX-License-Identifier: Apache-2.0
#include "pkg_remove.h"

#include <memory>
#include <stdexcept>

#include "pkg_handle.h"
#include "pkg_write.h"

namespace zan::pkg {

namespace {

// Why a package can't be written; caught before it leaves this source.
struct Fault : std::runtime_error {
    using std::runtime_error::runtime_error;
};

Fault library_fault() {
    constexpr int last_error = -1;
    return Fault(elf_message(last_error));
}

template <class Pointer>
Pointer checked(Pointer pointer) {
    if (!pointer)
        throw library_fault();
    return pointer;
}

struct EndElf {
    void operator()(Elf* elf) const { elf_end(elf); }
};

Elf32_Shdr header_of(Elf_Scn* section) {
    Elf32_Shdr header;
    if (!copy_header(section, header))
        throw library_fault();
    return header;
}

class Copy {
  public:
    Copy(const zan_pkg_file* from, int to)
        : m_from(from),
          m_old_names(checked(name_table(from))),
          m_to(checked(elf_begin(to, ELF_C_WRITE, nullptr))) {
        if (elf_getshdrstrndx(from->elf, &m_names_index) != 0)
            throw library_fault();
    }

    Elf* make(const std::unordered_set<std::string_view>& left_out) {
        Elf32_Ehdr* const header = checked(elf32_newehdr(m_to.get()));
        *header = *checked(elf32_getehdr(m_from->elf));
        header->e_shoff = 0; // the library sets these
        header->e_shnum = 0;
        for (Elf_Scn* section = elf_nextscn(m_from->elf, nullptr); section;
             section = elf_nextscn(m_from->elf, section)) {
            const Elf32_Shdr old = header_of(section);
            const std::string_view name = name_at(m_old_names, old.sh_name);
            const bool is_table = elf_ndxscn(section) == m_names_index;
            if (is_table || !left_out.contains(name))
                add(section, old, name, is_table);
        }
        finish_names();
        return m_to.get();
    }

  private:
    void add(Elf_Scn* section, const Elf32_Shdr& old, std::string_view name, bool is_table) {
        if (old.sh_link != 0 || (old.sh_flags & SHF_INFO_LINK) != 0)
            throw Fault("section '" + std::string(name) + "' refers to other sections by their numbers");
        Elf_Scn* const added = checked(elf_newscn(m_to.get()));
        Elf32_Shdr* const header = checked(elf32_getshdr(added));
        *header = old;
        header->sh_name = 0;
        if (old.sh_name != 0 && name.data()) {
            header->sh_name = static_cast<Elf32_Word>(m_names.size());
            m_names.append(name) += '\0';
        }
        Elf_Data* const data = checked(elf_newdata(added));
        if (is_table)
            m_table = added;
        else
            describe(*data, section, old);
        data->d_align = old.sh_addralign;
        data->d_type = ELF_T_BYTE;
        data->d_version = EV_CURRENT;
    }

    // The bytes as they are in the file, whatever the section's type: they stay the old package's.
    static void describe(Elf_Data& data, Elf_Scn* section, const Elf32_Shdr& old) {
        data.d_size = old.sh_size;
        if (old.sh_type == SHT_NOBITS || old.sh_size == 0)
            return;
        const Elf_Data* const bytes = checked(elf_rawdata(section, nullptr));
        if (!bytes->d_buf || bytes->d_size != old.sh_size)
            throw Fault("the bytes of a section are not in the file");
        data.d_buf = bytes->d_buf;
    }

    void finish_names() {
        if (!m_table)
            throw Fault("it has no table of names");
        Elf_Data* const data = checked(elf_getdata(m_table, nullptr));
        data->d_buf = m_names.data();
        data->d_size = m_names.size();
        const std::size_t index = elf_ndxscn(m_table);
        const bool fits = index < SHN_LORESERVE; // else it stands in section 0
        checked(elf32_getehdr(m_to.get()))->e_shstrndx = static_cast<Elf32_Half>(fits ? index : SHN_XINDEX);
        Elf_Scn* const section_0 = checked(elf_getscn(m_to.get(), 0));
        checked(elf32_getshdr(section_0))->sh_link = static_cast<Elf32_Word>(fits ? 0 : index);
        elf_flagshdr(section_0, ELF_C_SET, ELF_F_DIRTY);
    }

    const zan_pkg_file* m_from;
    const Elf_Data* m_old_names;
    std::size_t m_names_index = 0;
    std::unique_ptr<Elf, EndElf> m_to;
    Elf_Scn* m_table = nullptr;
    std::string m_names = std::string(1, '\0'); // the empty name first
};

} // namespace

std::string write_without(const zan_pkg_file* pkg, const std::unordered_set<std::string_view>& names, int to,
                          std::uint64_t max_size) {
    try {
        Copy copy(pkg, to);
        return write_elf(copy.make(names), to, max_size);
    } catch (const Fault& fault) {
        return fault.what();
    }
}

} // namespace zan::pkg
