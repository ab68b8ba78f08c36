// SPDX-License-Identifier: Apache-2.0
// Makes a package, and reads its section back: consumer PACKAGE prints the section.
#include <pkg_editor.h>
#include <stdio.h>

int main(int argc, char** argv) {
    const char version[] = "4.2.0 Build 117\n";
    char read_back[sizeof version];
    if (argc != 2)
        return 2;
    zan_pkg_file* pkg = zan_pkg_open_file(argv[1], ZAN_PKG_READ_WRITE | ZAN_PKG_CREATE | ZAN_PKG_SHOW_ERROR);
    if (!pkg || !zan_pkg_add_data_section(pkg, ".zan.version", version, sizeof version - 1) || !zan_pkg_close_file(pkg))
        return 1;
    pkg = zan_pkg_open_file(argv[1], ZAN_PKG_READ | ZAN_PKG_SHOW_ERROR);
    if (!pkg || !zan_pkg_read_section(pkg, ".zan.version", read_back, sizeof read_back))
        return 1;
    fputs(read_back, stdout);
    return !zan_pkg_close_file(pkg);
}
