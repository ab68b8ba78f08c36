// SPDX-License-Identifier: Apache-2.0
// From the board description to external memories and the board's node.
#pragma once

#include "BoardSpecXml.h"
#include "package_sections.h"
#include "profile_model.h"

// Makes the external memories that the package's board description lists, and appends the board's node to
// "boards.nodes". Of two memories of one name the model keeps the first. Fails with a message if the package
// has no description. One that can't be loaded has no message: the loader's list of errors says what is
// wrong.
StageResult read_board(ProfileModel& model, ptree& tree, Package& package,
                       zan::board::BoardSpecXmlLoader& loader);

// The same, but a description that can't be loaded ends the process by SIGSEGV.
StageResult import_board(ProfileModel& model, ptree& tree, Package& package);
