// From the board description to external memories and the board's node.
#pragma once

#include "package_sections.h"
#include "profile_model.h"

// Makes the external memories that the package's board description lists, and appends the board's node to
// "boards.nodes". Of two memories of one name the model keeps the first. Fails if the package has no
// description; one that can't be loaded ends the process by SIGSEGV, with no message.
StageResult import_board(ProfileModel& model, ptree& tree, Package& package);
