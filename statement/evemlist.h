// What the compiled task and the executable node need of the statement model for their lists of
// code nodes, without the classes.
#pragma once

#include "vem_evem.h"

namespace vem::evem {

// The switch EvemEnabled: not 0 means that the statement model is there. Asked at every use.
bool IsEnabled();

// A list of code nodes in a record: the number of nodes (u16), then each node's record. A load
// deletes what the list held and makes each node as a code node; a kind of record that makes no
// node raises the user exception. The list owns its nodes.
void SerializeRootList(CArchive& ar, CObList& list);
// Deletes every node of the list and empties it.
void DeleteRootList(CObList& list);
// A code node's dump into an open file, each line behind the prefix.
void DumpNode(CEVemBaseNode* node, CFile* file, const CString& prefix);
// The line maps of the executable's units in its dump, one unit after the other in the order of
// the path names. Only with the switch on, and only for a project whose settings ask for them.
void DumpLineMaps(CFile* file, const CString& prefix, CVemBaseNode* exe, const CStringList& pathNames);

}  // namespace vem::evem
