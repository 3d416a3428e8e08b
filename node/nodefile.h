// Node files: the frame of a file, the version stamp, and making a node of a stored type.
#pragma once

#include "node/basenode.h"

// "Norvadis_VEM_Version:003" with its terminating zero.
inline constexpr char kVemVersionStamp[25] = "Norvadis_VEM_Version:003";
inline constexpr unsigned kVemVersionStampLength = 25;

// Smallest base record: schema, type, expanded, empty name, serial, empty extra text, child count,
// and the type byte in front of it.
inline constexpr u64 kMinNodeRecordBytes = 13;

// Made above the node layer (project/nodetypes.cpp), which knows the class of each type.
namespace vem::nodetypes {
// VemNewNode for a type read from a file: an unknown type is a corrupt file (archive exception).
CVemBaseNode* NewForLoad(u32 type);
// A node made by a type byte or type word must bear a type of its own class in its record: a store
// writes that type, and another class would then read the record back. Raises a bad class.
void CheckStoredType(const CVemBaseNode* node);
}  // namespace vem::nodetypes

// The texts of the load's message box for a memory shortage and other platform exceptions.
extern const char kVemRebuildMessage[];
// The texts that the system keeps for a file of another compiler version (not shown).
extern const char kVemOutdatedMessage[];
