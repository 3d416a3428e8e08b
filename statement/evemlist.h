// What the compiled task and the executable node need of the statement model for their lists of
// code nodes, without the classes.
#pragma once

#include "vem_evem.h"

// The switch EvemEnabled: not 0 means that the statement model is there. Asked at every use.
bool EVemIsEnabled();

// A list of code nodes in a record: the number of nodes (u16), then each node's record. A load
// deletes what the list held and makes each node as a code node; a kind of record that makes no
// node raises the user exception. The list owns its nodes.
void EVemSerializeRootList(CArchive& ar, CObList& list);
// Deletes every node of the list and empties it.
void EVemDeleteRootList(CObList& list);
// A code node's dump into an open file, each line behind the prefix.
void EVemDumpNode(CEVemBaseNode* node, CFile* file, const CString& prefix);
// The line maps of the executable node's code nodes, for the path names that its dump has just
// printed; the dump calls it only for project code 271.
void EVemDumpLineMaps(CFile* file, const CString& prefix, CVemBaseNode* exe, const CStringList& pathNames);
