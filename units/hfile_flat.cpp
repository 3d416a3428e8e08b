// The key block of a source file for hosts, through CHFile.
#include "units/hfile.h"
#include "vem_ext.h"

int VemSrcGetValue(const char* sourceFile, const char* key, CString& value) {
    CHFile file;
    if (!file.OpenRead(sourceFile, 1)) return 0;
    try {
        value = file.GetValue(key);
    } catch (const CFileException&) {
        file.CloseChecked(1);
        return 0;
    }
    return file.CloseChecked(1);
}

int VemSrcSetValue(const char* sourceFile, const char* key, const char* value) {
    CHFile file;
    if (!file.OpenUpdate(sourceFile, 1)) return 0;
    int result = 0;
    try {
        result = file.SetValue(key, value);
    } catch (const CFileException&) {
        result = 0;
    }
    return file.CloseChecked(1) && result;
}

int VemSrcGetUnit(const char* sourceFile, CString& kind, CString& name) {
    CHFile file;
    if (!file.OpenRead(sourceFile, 1)) return 0;
    kind = file.GetUnitKind(1);
    name = file.GetUnitName(1);
    return file.CloseChecked(1) && !kind.IsEmpty();
}
