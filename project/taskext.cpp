// Extension: the task list of a task container, for tools that show it.
#include "project/tasks.h"
#include "vem_ext.h"

const CMapStringToString* VemGetTaskFileMap(CVemBaseNode* node) {
    if (!node || !node->IsKindOf(RUNTIME_CLASS(CVemTaskContainerNode))) return nullptr;
    return &static_cast<CVemTaskContainerNode*>(node)->TaskList;
}
