#include "tly_exe.h"

int main(int argc, char** argv) {
    return tlyMain(argc, argv);
}
