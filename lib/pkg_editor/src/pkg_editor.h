// Design packages: ELF files used as stores of named sections.
#pragma once
