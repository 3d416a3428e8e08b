// One field of a record, in both directions: a field that is wider in memory than in the file loses
// its high bits when stored and is zero-extended when loaded.
#pragma once

#include "platform/archive.h"

namespace vem {

template <typename Disk, typename Field>
void StoreField(CArchive& ar, const Field& field) {
    ar << static_cast<Disk>(field);
}

// The load, which runs for every field of every node, is short enough to stand in its caller.
template <typename Disk, typename Field>
inline void SerializeField(CArchive& ar, Field& field) {
    if (ar.IsStoring()) return StoreField<Disk>(ar, field);
    Disk value;
    ar >> value;
    field = static_cast<Field>(value);
}

inline void SerializeText(CArchive& ar, CString& text) {
    if (ar.IsStoring()) {
        ar << text;
    } else {
        ar.ReadText(text);
    }
}

}  // namespace vem
