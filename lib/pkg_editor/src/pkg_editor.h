/* SPDX-License-Identifier: Apache-2.0 */
/* Design packages: ELF files of the 32-bit class, used as stores of named sections; and directory streams.
 *
 * Open a package, read and edit it any number of times, close it. Edits reach the file when it is closed.
 * Functions that return int return 1 for success and 0 for failure, unless noted. Nothing is thrown. A null
 * handle, name or path is a failure that prints nothing, unless noted. With ZAN_PKG_SHOW_ERROR failures are
 * reported on standard error, with ZAN_PKG_SHOW_INFO progress is reported on standard output; by default the
 * functions are silent. Contents of a package are never trusted: names and sections that reach beyond the
 * file count as missing.
 *
 * A handle belongs to one thread. docs/package.md describes the file's layout. */
#ifndef ZAN_PKG_EDITOR_H
#define ZAN_PKG_EDITOR_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Bits of an open mode. */
#define ZAN_PKG_READ 0x1         /* read only */
#define ZAN_PKG_READ_WRITE 0x2   /* read and write */
#define ZAN_PKG_CREATE 0x4       /* make a new package; only together with ZAN_PKG_READ_WRITE */
#define ZAN_PKG_SHOW_ERROR 0x100 /* report failures */
#define ZAN_PKG_SHOW_INFO 0x200  /* report progress */

/* Longest name of a section, without its NUL. */
#define ZAN_PKG_MAX_SECTION_NAME 4096

typedef struct zan_pkg_file zan_pkg_file;

/* Opens the package at `filename`, or with ZAN_PKG_CREATE makes one, in place of what the file held. The
 * handle keeps the pointer `filename`. Returns null on failure. Opened read-only, a file of any kind is
 * accepted, and is found to have no sections. An ELF file without a table of section names can't be opened
 * for writing: it stops the process. */
zan_pkg_file* zan_pkg_open_file(const char* filename, int mode);

/* Opens for reading a package of `size` bytes in memory, which stay the caller's and must outlive the handle.
 * The mode has show bits only. Returns null on failure. */
zan_pkg_file* zan_pkg_open_file_from_memory(const void* data, size_t size, int mode);

/* Writes pending edits, and releases the handle and the memory of all pointers from it. Returns whether the
 * file could be closed, 1 for a package in memory; a failed write is reported on standard error and does not
 * show in the result. A handle that was only read may be released with plain free() instead, which leaves its
 * descriptor open. */
int zan_pkg_close_file(zan_pkg_file* pkg);

/* Sets the show flags from the show bits of `mode`. */
void zan_pkg_set_show_mode(zan_pkg_file* pkg, int mode);

/* Returns 1 if the package has the section, and stores its size in bytes if `size` is not null. */
int zan_pkg_section_exists(zan_pkg_file* pkg, const char* name, size_t* size);

/* Copies a section into `buffer` with a NUL after it: `capacity` must be above the section's size. */
int zan_pkg_read_section(zan_pkg_file* pkg, const char* name, void* buffer, size_t capacity);

/* Stores a pointer to the section's bytes, valid until the package is closed; null for an empty section. */
int zan_pkg_read_section_transient(zan_pkg_file* pkg, const char* name, void** data);

/* Writes a section's bytes into a file, in place of what it held. */
int zan_pkg_read_section_into_file(zan_pkg_file* pkg, const char* name, const char* filename);

/* Writes the names of all sections into `buffer`, in order, with newlines between them and a NUL at the end.
 * If they don't fit, returns 0 with those that do. Without any name the buffer stays as it was. */
int zan_pkg_section_names(zan_pkg_file* pkg, char* buffer, size_t capacity);

/* Prints names and sizes of all sections on standard output. */
int zan_pkg_list_file_sections(zan_pkg_file* pkg);

/* Adds a section, or replaces the contents of one. The bytes are not copied: they stay the caller's and must
 * live until the package is closed. A section has at most 2^32 - 1 bytes; `data` may be null if `size` is 0.
 * Adding refuses a name that is taken or too long. */
int zan_pkg_add_data_section(zan_pkg_file* pkg, const char* name, const void* data, size_t size);
int zan_pkg_update_section(zan_pkg_file* pkg, const char* name, const void* data, size_t size);

/* The same with the contents of a file, which are read at once. A file that can't be read is reported on
 * standard error whatever the show flags. */
int zan_pkg_add_data_section_from_file(zan_pkg_file* pkg, const char* name, const char* filename);
int zan_pkg_update_section_from_file(zan_pkg_file* pkg, const char* name, const char* filename);

/* Directory streams: a tree of files and folders as one run of compressed bytes, for instance as a section of
 * a package. These functions report each failure on standard error, and leave what they have written before
 * it. Only files and folders are stored; a symbolic link counts as what it points to. docs/stream.md
 * describes the format. */

/* Packs the files and folders at `paths`, a list that ends with a null, into a stream at `filename`, in place
 * of what the file held. Names in the stream are the paths as they are given. A file's bytes pass through
 * memory in one piece. Of a file's size the low 32 bits count: a file of 4 GiB or more is cut without a
 * message. A failed write of the very last bytes may go unnoticed. */
int zan_pkg_pack(const char* filename, const char* const* paths);

/* Unpacks the stream at `filename`, or for "-" from standard input, into the folder `directory`, which is
 * made if it isn't there; the folders above it and above an entry are not. Files that exist are overwritten;
 * permissions are the process's usual ones. Names in the stream are joined to `directory` as they stand, ".."
 * too: unpack only what you trust. Returns 2 where there is no memory for a file. */
int zan_pkg_unpack(const char* filename, const char* directory);

/* The same for a stream of `size` bytes in memory, which must not be null. */
int zan_pkg_unpack_buffer(const void* buffer, size_t size, const char* directory);

#ifdef __cplusplus
}
#endif

#endif
