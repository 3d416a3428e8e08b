// CObject and run-time class records: class name, schema, creation by name.
#pragma once

#include "platform/types.h"

class CArchive;
class CObject;

// Diagnostic dumps of the platform; the library writes its own text dumps instead.
class VEM_API CDumpContext {};

struct VEM_API CRuntimeClass {
    const char* m_lpszClassName;
    u32 m_wSchema;                      // class schema, 0xFFFF for classes that cannot be stored
    CObject* (*m_pfnCreateObject)();    // creation without arguments, null if not creatable
    const CRuntimeClass* m_pBaseClass;  // null for CObject

    CObject* CreateObject() const;
    bool IsDerivedFrom(const CRuntimeClass* base) const;

    // Registry of the classes that can be made by name (the object references of an archive).
    static const CRuntimeClass* FromName(const char* className);
    static void Register(const CRuntimeClass* cls);
    static int RegisteredCount();
};

class VEM_API CObject {
public:
    virtual ~CObject();
    virtual const CRuntimeClass* GetRuntimeClass() const;
    virtual void Serialize(CArchive& ar);
    virtual void AssertValid() const;
    virtual void Dump(CDumpContext& dc) const;

    bool IsKindOf(const CRuntimeClass* cls) const;
    bool IsSerializable() const;

    static const CRuntimeClass classCObject;

protected:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;
};

#define RUNTIME_CLASS(cls) (&cls::class##cls)

// A class with a run-time record but no creation by name.
#define VEM_DECLARE_DYNAMIC(cls)           \
public:                                    \
    static const CRuntimeClass class##cls; \
    const CRuntimeClass* GetRuntimeClass() const override;

#define VEM_IMPLEMENT_DYNAMIC(cls, base)                                                \
    const CRuntimeClass cls::class##cls = {#cls, 0xFFFF, nullptr, RUNTIME_CLASS(base)}; \
    const CRuntimeClass* cls::GetRuntimeClass() const { return &class##cls; }

// A class that can stand in an archive as an object: made by name, then it reads its record.
#define VEM_DECLARE_SERIAL(cls)                            \
public:                                                    \
    static const CRuntimeClass class##cls;                 \
    const CRuntimeClass* GetRuntimeClass() const override; \
    static CObject* CreateObject();

#define VEM_IMPLEMENT_SERIAL(cls, base, schema)                                                    \
    CObject* cls::CreateObject() { return new cls; }                                               \
    const CRuntimeClass cls::class##cls = {#cls, schema, &cls::CreateObject, RUNTIME_CLASS(base)}; \
    const CRuntimeClass* cls::GetRuntimeClass() const { return &class##cls; }                      \
    [[maybe_unused]] static const bool vem_registered_##cls = (CRuntimeClass::Register(&cls::class##cls), true);
