// CVemPouNode: its record, its dump, and what it takes from its source file.
#include <ctime>

#include "platform/fieldio.h"
#include "units/hfile.h"
#include "units/pou.h"
#include "vem_bytearray.h"

//  width   field
//  .       base record, with the children
//  .       statement list
//  .       PflArray: tag word (0x0001 for none), then the array's record
//  2       code segment
//  2       data segment
//  2       ini data segment
//  2       CrSize
//  2       SizeCrStack
//  2       ElemCrStack
//  string  code file name
//  4       checksum
//  4       date
//  2       data segment length
//  4       start offset
//  string  path
//  2       program number
// No version word: the stamp of the node file guards the record. The kinds of unit follow with
// their tails.
void CVemPouNode::Serialize(CArchive& ar) {
    CVemBaseNode::Serialize(ar);
    StatList->Serialize(ar);
    vem::SerializeOwned(PflArray, ar);
    vem::SerializeField<u16>(ar, CodeSegNr);
    vem::SerializeField<u16>(ar, DataSegNr);
    vem::SerializeField<u16>(ar, IniDataSegNr);
    vem::SerializeField<u16>(ar, CrSize);
    vem::SerializeField<u16>(ar, SizeCrStack);
    vem::SerializeField<u16>(ar, ElemCrStack);
    vem::SerializeText(ar, CodeFileName);
    vem::SerializeField<u32>(ar, Checksum);
    vem::SerializeField<u32>(ar, Date);
    vem::SerializeField<u16>(ar, DataSegLength);
    vem::SerializeField<u32>(ar, StartOffset);
    vem::SerializeText(ar, Path);
    vem::SerializeField<u16>(ar, ProgramNr);
}

// The checksum is not computed here: it is the number that the source's header block holds.
void CVemPouNode::SetCheckSum(const char* sourceFileName) {
    u32 value = 0;
    if (vem::ReadCheckKey(sourceFileName, value)) Checksum = value;
}

// A file that cannot be opened, or whose time has no local form, leaves the date as it was.
void CVemPouNode::SetDate(const char* fileName) {
    CFile file;
    if (!file.Open(fileName, CFile::modeRead | CFile::shareDenyNone | CFile::typeBinary)) return;
    CFileStatus status;
    std::tm local{};
    if (CFile::GetStatus(fileName, status) && vem::LocalTime(status.m_mtime, local)) {
        Date =
            PackDate(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    }
    file.Close();
}

u32 CVemPouNode::PackDate(int year, int month, int day, int hour, int minute, int second) {
    return static_cast<u32>(year - 1980) << 25 | static_cast<u32>(month) << 21 | static_cast<u32>(day) << 16 |
           static_cast<u32>(hour) << 11 | static_cast<u32>(minute) << 5 | static_cast<u32>(second / 2);
}

// Two blocks, each in one write: the unit's fields, then its statement list. The children follow
// with the indent extended.
void CVemPouNode::NodeDump(CFile* file, CString indent) {
    WriteText(file, HeadDumpText(indent));
    WriteText(file, StatListDumpText(indent));
    DumpChildren(file, indent);
}

CString CVemPouNode::HeadDumpText(const CString& indent) const {
    const char* in = indent.GetString();
    CString text;
    text.Format("%s*POUNODE: %s\n", in, Name.GetString());
    text.AppendFormat("%sPath: %s \n", in, Path.GetString());
    text.AppendFormat("%sDataSegLength: %u \n", in, static_cast<unsigned>(DataSegLength));
    text.AppendFormat("%sProgramNr: %i\n", in, static_cast<int>(ProgramNr));
    text.AppendFormat("%sCodeSegNr: %u \n", in, static_cast<unsigned>(CodeSegNr));
    text.AppendFormat("%sDataSegNr: %u \n", in, static_cast<unsigned>(DataSegNr));
    text.AppendFormat("%sIniDataSegNr: %u \n", in, static_cast<unsigned>(IniDataSegNr));
    text.AppendFormat("%sCrSize: %u \n", in, static_cast<unsigned>(CrSize));
    text.AppendFormat("%sCodeFileName: %s \n", in, CodeFileName.GetString());
    text.AppendFormat("%sChecksum: %lu \n", in, static_cast<unsigned long>(Checksum));
    text.AppendFormat("%sDate: %lu \n", in, static_cast<unsigned long>(Date));
    text.AppendFormat("%sStartOffset: %lu \n", in, static_cast<unsigned long>(StartOffset));
    text.AppendFormat("%sSizeCrStack: %u \n", in, static_cast<unsigned>(SizeCrStack));
    text.AppendFormat("%sElemCrStack: %u \n\n", in, static_cast<unsigned>(ElemCrStack));
    return text;
}

// Every line of the block is followed by the indent, so that the next line starts with it.
CString CVemPouNode::StatListDumpText(const CString& indent) const {
    CString text = indent + "STATMENTLIST \n" + indent;
    for (POSITION pos = StatList->GetStartPosition(); pos;) {
        u16 key;
        CObject* object;
        StatList->GetNextAssoc(pos, key, object);
        const auto* entry = static_cast<const CStatListEntry*>(object);
        text.AppendFormat("Nr:%u AwlLine:%u CodeLine:%li OperandType:%u AEType:%u \n", static_cast<unsigned>(key),
                          static_cast<unsigned>(entry->AwlLine), static_cast<long>(entry->CodeLine),
                          static_cast<unsigned>(entry->OperandType), static_cast<unsigned>(entry->AEType));
        text += indent;
    }
    text += "\n";
    return text;
}
