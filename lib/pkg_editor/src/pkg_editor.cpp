#include "pkg_editor.h"
