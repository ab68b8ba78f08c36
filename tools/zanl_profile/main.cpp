#include "toolbox.h"

int main(int argc, char** argv) {
    return zan::tool::run_toolbox(argc, argv);
}
