#include "platform/object.h"

#include <cstring>
#include <string>
#include <unordered_map>

#include "platform/archive.h"

namespace {

std::unordered_map<std::string, const CRuntimeClass*>& Registry() {
    static std::unordered_map<std::string, const CRuntimeClass*> registry;
    return registry;
}

}  // namespace

const CRuntimeClass CObject::classCObject = {"CObject", 0xFFFF, nullptr, nullptr};

CObject* CRuntimeClass::CreateObject() const { return m_pfnCreateObject ? m_pfnCreateObject() : nullptr; }

bool CRuntimeClass::IsDerivedFrom(const CRuntimeClass* base) const {
    for (const CRuntimeClass* c = this; c; c = c->m_pBaseClass) {
        if (c == base) return true;
    }
    return false;
}

const CRuntimeClass* CRuntimeClass::FromName(const char* className) {
    auto& reg = Registry();
    auto it = reg.find(className ? className : "");
    return it == reg.end() ? nullptr : it->second;
}

void CRuntimeClass::Register(const CRuntimeClass* cls) { Registry()[cls->m_lpszClassName] = cls; }

int CRuntimeClass::RegisteredCount() { return static_cast<int>(Registry().size()); }

CObject::~CObject() = default;

const CRuntimeClass* CObject::GetRuntimeClass() const { return &classCObject; }

void CObject::Serialize(CArchive&) {}

void CObject::AssertValid() const {}

void CObject::Dump(CDumpContext&) const {}

bool CObject::IsKindOf(const CRuntimeClass* cls) const { return GetRuntimeClass()->IsDerivedFrom(cls); }

bool CObject::IsSerializable() const { return GetRuntimeClass()->m_wSchema != 0xFFFF; }
