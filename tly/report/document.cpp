// SPDX-License-Identifier: Apache-2.0
// Viewers read the keys by their paths, so a list is there even if it gets no nodes; that of channels never
// gets any.
#include "document.h"

#include "tly_constants.h"
#include "tree_sink.h"

ptree empty_document() {
    ptree tree;
    TreeSink sink(tree);
    sink.text("json_type", "Corvane Profiler JSON");
    sink.open("versions", Form::object);
    sink.text("profiler_json_version", tly_version);
    sink.close();
    for (const char* list : {"kernels", "boards", "memtransfers", "channels"}) {
        sink.open(list, Form::object);
        sink.text("nodes", "");
        sink.close();
    }
    sink.open("run_info", Form::object);
    sink.open("nodes", Form::array);
    sink.open({}, Form::object);
    sink.text("type", "runinfo");
    sink.close();
    sink.close();
    sink.close();
    return tree;
}
