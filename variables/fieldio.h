// One field of a record, in both directions: a field that is wider in memory than in the file loses
// its high bits when stored and is zero-extended when loaded.
#pragma once

#include "platform/archive.h"

template <typename Disk, typename Field>
void VemSerializeField(CArchive& ar, Field& field) {
    if (ar.IsStoring()) {
        ar << static_cast<Disk>(field);
    } else {
        Disk value;
        ar >> value;
        field = static_cast<Field>(value);
    }
}

inline void VemSerializeText(CArchive& ar, CString& text) {
    if (ar.IsStoring()) {
        ar << text;
    } else {
        ar >> text;
    }
}
