// The collections: arrays, lists and maps of the platform. Maps iterate in insertion order, and a
// replaced value keeps its place, so that a store, a load and a store again give the same bytes.
#pragma once

#include <vector>

#include "platform/cstring.h"
#include "platform/exceptions.h"
#include "platform/object.h"

class CArchive;

namespace vem::detail {

// Doubly linked list; POSITION is a pointer to a link.
template <typename T>
class LinkedList {
public:
    struct Link {
        T value;
        Link* prev;
        Link* next;
    };
    LinkedList() = default;
    LinkedList(const LinkedList&) = delete;
    LinkedList& operator=(const LinkedList&) = delete;
    ~LinkedList() { RemoveAll(); }

    int GetCount() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }
    POSITION GetHeadPosition() const { return ToPos(m_head); }
    POSITION GetTailPosition() const { return ToPos(m_tail); }
    T& GetHead() { return m_head->value; }
    const T& GetHead() const { return m_head->value; }
    T& GetTail() { return m_tail->value; }
    const T& GetTail() const { return m_tail->value; }
    T& GetNext(POSITION& pos) {
        Link* l = FromPos(pos);
        pos = ToPos(l->next);
        return l->value;
    }
    const T& GetNext(POSITION& pos) const {
        Link* l = FromPos(pos);
        pos = ToPos(l->next);
        return l->value;
    }
    T& GetPrev(POSITION& pos) {
        Link* l = FromPos(pos);
        pos = ToPos(l->prev);
        return l->value;
    }
    T& GetAt(POSITION pos) { return FromPos(pos)->value; }
    const T& GetAt(POSITION pos) const { return FromPos(pos)->value; }
    void SetAt(POSITION pos, const T& v) { FromPos(pos)->value = v; }
    POSITION AddHead(const T& v) { return InsertBefore(GetHeadPosition(), v); }
    POSITION AddTail(const T& v) { return InsertAfter(GetTailPosition(), v); }
    // A null position inserts at the head (before) or at the tail (after).
    POSITION InsertBefore(POSITION pos, const T& v) {
        Link* at = FromPos(pos);
        Link* l = at ? new Link{v, at->prev, at} : new Link{v, nullptr, m_head};
        Hook(l);
        return ToPos(l);
    }
    POSITION InsertAfter(POSITION pos, const T& v) {
        Link* at = FromPos(pos);
        Link* l = at ? new Link{v, at, at->next} : new Link{v, m_tail, nullptr};
        Hook(l);
        return ToPos(l);
    }
    T RemoveHead() {
        T v = m_head->value;
        RemoveAt(ToPos(m_head));
        return v;
    }
    T RemoveTail() {
        T v = m_tail->value;
        RemoveAt(ToPos(m_tail));
        return v;
    }
    void RemoveAt(POSITION pos) {
        Link* l = FromPos(pos);
        (l->prev ? l->prev->next : m_head) = l->next;
        (l->next ? l->next->prev : m_tail) = l->prev;
        --m_count;
        delete l;
    }
    void RemoveAll() {
        Link* l = m_head;
        while (l) {
            Link* n = l->next;
            delete l;
            l = n;
        }
        m_head = m_tail = nullptr;
        m_count = 0;
    }
    // Moves every link of `other` to the front of this list, in their order, without allocating.
    void SpliceFront(LinkedList& other) {
        if (!other.m_head) return;
        other.m_tail->next = m_head;
        (m_head ? m_head->prev : m_tail) = other.m_tail;
        m_head = other.m_head;
        m_count += other.m_count;
        other.m_head = other.m_tail = nullptr;
        other.m_count = 0;
    }
    POSITION FindIndex(int index) const {
        if (index < 0 || index >= m_count) return nullptr;
        Link* l = m_head;
        while (index-- > 0) l = l->next;
        return ToPos(l);
    }

protected:
    static POSITION ToPos(Link* l) { return reinterpret_cast<POSITION>(l); }
    static Link* FromPos(POSITION p) { return reinterpret_cast<Link*>(p); }
    void Hook(Link* l) {
        (l->prev ? l->prev->next : m_head) = l;
        (l->next ? l->next->prev : m_tail) = l;
        ++m_count;
    }
    Link* m_head = nullptr;
    Link* m_tail = nullptr;
    int m_count = 0;
};

// Map with unique keys that iterates in insertion order; a replaced value keeps its place. The
// entries form a list in that order; the index over them is an open-addressed table of the
// entries' hashes, so that a lookup reads one slot and the entry it points to.
template <typename K, typename V, typename Hash>
class OrderedMap {
public:
    struct Entry {
        K key;
        V value;
        Entry* prev;
        Entry* next;
    };
    OrderedMap() = default;
    OrderedMap(const OrderedMap&) = delete;
    OrderedMap& operator=(const OrderedMap&) = delete;
    ~OrderedMap() { RemoveAll(); }

    int GetCount() const { return static_cast<int>(m_count); }
    int GetSize() const { return GetCount(); }
    bool IsEmpty() const { return m_count == 0; }
    bool Lookup(const K& key, V& value) const {
        const Entry* e = Find(key, HashOf(key));
        if (!e) return false;
        value = e->value;
        return true;
    }
    const V* PLookup(const K& key) const {
        const Entry* e = Find(key, HashOf(key));
        return e ? &e->value : nullptr;
    }
    V& operator[](const K& key) {
        const std::size_t hash = HashOf(key);
        if (Entry* e = Find(key, hash)) return e->value;
        if ((m_count + 1) * 8 > m_slots.size() * 7) Rehash(m_slots.empty() ? kMinSlots : m_slots.size() * 2);
        Entry* e = new Entry{key, V(), m_tail, nullptr};  // nothing has changed if this throws
        (m_tail ? m_tail->next : m_head) = e;
        m_tail = e;
        Place(Slot{hash, e});
        ++m_count;
        return e->value;
    }
    void SetAt(const K& key, const V& value) { (*this)[key] = value; }
    bool RemoveKey(const K& key) {
        if (m_slots.empty()) return false;
        const std::size_t hash = HashOf(key);
        const std::size_t mask = m_slots.size() - 1;
        std::size_t i = Home(hash);
        while (m_slots[i].entry && !(m_slots[i].hash == hash && m_slots[i].entry->key == key)) i = (i + 1) & mask;
        Entry* e = m_slots[i].entry;
        if (!e) return false;
        // Close the gap: every later slot of the run whose home does not lie after the gap moves
        // into it, so that no lookup stops short of its key.
        for (std::size_t j = (i + 1) & mask; m_slots[j].entry; j = (j + 1) & mask) {
            const std::size_t home = Home(m_slots[j].hash);
            const bool homeAfterGap = i <= j ? (home > i && home <= j) : (home > i || home <= j);
            if (homeAfterGap) continue;
            m_slots[i] = m_slots[j];
            i = j;
        }
        m_slots[i] = Slot{};
        --m_count;
        (e->prev ? e->prev->next : m_head) = e->next;
        (e->next ? e->next->prev : m_tail) = e->prev;
        delete e;
        return true;
    }
    void RemoveAll() {
        Entry* e = m_head;
        while (e) {
            Entry* n = e->next;
            delete e;
            e = n;
        }
        m_head = m_tail = nullptr;
        m_count = 0;
        std::vector<Slot>().swap(m_slots);
    }
    POSITION GetStartPosition() const { return reinterpret_cast<POSITION>(m_head); }
    void GetNextAssoc(POSITION& pos, K& key, V& value) const {
        Entry* e = reinterpret_cast<Entry*>(pos);
        key = e->key;
        value = e->value;
        pos = reinterpret_cast<POSITION>(e->next);
    }
    void InitHashTable(unsigned size) {
        std::size_t slots = kMinSlots;
        while (slots * 7 < static_cast<std::size_t>(size) * 8) slots *= 2;
        if (slots > m_slots.size()) Rehash(slots);
    }

private:
    struct Slot {
        std::size_t hash = 0;
        Entry* entry = nullptr;  // null: free
    };
    static constexpr std::size_t kMinSlots = 16;

    static std::size_t HashOf(const K& key) { return Hash()(key); }
    // The slot where a hash starts looking: the high bits of the hash spread by a multiplication,
    // so that keys that differ in a few low bits (small words, numbered names) spread too.
    std::size_t Home(std::size_t hash) const {
        return static_cast<std::size_t>((static_cast<u64>(hash) * 0x9E3779B97F4A7C15ull) >> (64 - m_shift));
    }
    Entry* Find(const K& key, std::size_t hash) const {
        if (m_slots.empty()) return nullptr;
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t i = Home(hash);; i = (i + 1) & mask) {
            const Slot& slot = m_slots[i];
            if (!slot.entry) return nullptr;
            if (slot.hash == hash && slot.entry->key == key) return slot.entry;
        }
    }
    void Place(const Slot& slot) {
        const std::size_t mask = m_slots.size() - 1;
        std::size_t i = Home(slot.hash);
        while (m_slots[i].entry) i = (i + 1) & mask;
        m_slots[i] = slot;
    }
    // A table of `slots` (a power of two) slots with every entry placed anew.
    void Rehash(std::size_t slots) {
        std::vector<Slot> grown(slots);
        unsigned shift = 0;
        while ((std::size_t{1} << shift) < slots) ++shift;
        std::vector<Slot> old = std::move(m_slots);
        m_slots = std::move(grown);
        m_shift = shift;
        for (const Slot& slot : old) {
            if (slot.entry) Place(slot);
        }
    }

    Entry* m_head = nullptr;
    Entry* m_tail = nullptr;
    std::size_t m_count = 0;
    unsigned m_shift = 0;
    std::vector<Slot> m_slots;
};

// Growing array with checked access; an index outside raises the invalid-argument exception.
template <typename T>
class CheckedArray {
public:
    int GetSize() const { return static_cast<int>(m_v.size()); }
    int GetCount() const { return GetSize(); }
    int GetUpperBound() const { return GetSize() - 1; }
    bool IsEmpty() const { return m_v.empty(); }
    void SetSize(int newSize, int growBy = -1) {
        if (newSize < 0) VemThrowInvalidArg();
        if (growBy > 0) m_growBy = growBy;
        m_v.resize(static_cast<std::size_t>(newSize), T());
    }
    const T& GetAt(int i) const {
        Check(i);
        return m_v[static_cast<std::size_t>(i)];
    }
    T& ElementAt(int i) {
        Check(i);
        return m_v[static_cast<std::size_t>(i)];
    }
    void SetAt(int i, const T& v) { ElementAt(i) = v; }
    T& operator[](int i) { return ElementAt(i); }
    const T& operator[](int i) const { return GetAt(i); }
    void SetAtGrow(int i, const T& v) {
        if (i < 0) VemThrowInvalidArg();
        if (i >= GetSize()) SetSize(i + 1);
        m_v[static_cast<std::size_t>(i)] = v;
    }
    int Add(const T& v) {
        m_v.push_back(v);
        return GetSize() - 1;
    }
    void InsertAt(int i, const T& v, int count = 1) {
        if (i < 0 || count < 0) VemThrowInvalidArg();
        if (i > GetSize()) SetSize(i);
        m_v.insert(m_v.begin() + i, static_cast<std::size_t>(count), v);
    }
    void RemoveAt(int i, int count = 1) {
        if (i < 0 || count < 0 || i + count > GetSize()) VemThrowInvalidArg();
        m_v.erase(m_v.begin() + i, m_v.begin() + i + count);
    }
    void RemoveAll() {
        m_v.clear();
        m_v.shrink_to_fit();
    }
    T* GetData() { return m_v.data(); }
    const T* GetData() const { return m_v.data(); }
    int GetGrowBy() const { return m_growBy; }

protected:
    void Check(int i) const {
        if (i < 0 || i >= GetSize()) VemThrowInvalidArg();
    }
    std::vector<T> m_v;
    int m_growBy = 0;
};

struct WordHash {
    std::size_t operator()(u16 w) const noexcept { return w; }
};

}  // namespace vem::detail

// Array of object pointers; it does not own them. Stored as a count and object references.
class VEM_API CObArray : public CObject, public vem::detail::CheckedArray<CObject*> {
    VEM_DECLARE_SERIAL(CObArray)
public:
    void Serialize(CArchive& ar) override;
};

class VEM_API CDWordArray : public CObject, public vem::detail::CheckedArray<u32> {
    VEM_DECLARE_SERIAL(CDWordArray)
public:
    void Serialize(CArchive& ar) override;  // count, then 32-bit words
};

class VEM_API CWordArray : public CObject, public vem::detail::CheckedArray<u16> {
    VEM_DECLARE_SERIAL(CWordArray)
public:
    void Serialize(CArchive& ar) override;  // count, then 16-bit words
};

class VEM_API CStringArray : public CObject, public vem::detail::CheckedArray<CString> {
    VEM_DECLARE_SERIAL(CStringArray)
public:
    void Serialize(CArchive& ar) override;  // count, then strings
};

// List of object pointers; it does not own them.
class VEM_API CObList : public CObject, public vem::detail::LinkedList<CObject*> {
    VEM_DECLARE_SERIAL(CObList)
public:
    explicit CObList(int blockSize = 10) { (void)blockSize; }
    POSITION Find(const CObject* value, POSITION startAfter = nullptr) const;
    void Serialize(CArchive& ar) override;
};

class VEM_API CStringList : public CObject, public vem::detail::LinkedList<CString> {
    VEM_DECLARE_SERIAL(CStringList)
public:
    explicit CStringList(int blockSize = 10) { (void)blockSize; }
    POSITION Find(const char* value, POSITION startAfter = nullptr) const;
    void Serialize(CArchive& ar) override;
};

// Map from text to object pointer; it does not own the objects.
class VEM_API CMapStringToOb : public CObject, public vem::detail::OrderedMap<CString, CObject*, CStringHash> {
    VEM_DECLARE_SERIAL(CMapStringToOb)
public:
    explicit CMapStringToOb(int blockSize = 10) { (void)blockSize; }
    void Serialize(CArchive& ar) override;  // count, then key string and object reference
};

class VEM_API CMapStringToString : public CObject, public vem::detail::OrderedMap<CString, CString, CStringHash> {
    VEM_DECLARE_SERIAL(CMapStringToString)
public:
    explicit CMapStringToString(int blockSize = 10) { (void)blockSize; }
    void Serialize(CArchive& ar) override;  // count, then key and value strings
};

class VEM_API CMapWordToOb : public CObject, public vem::detail::OrderedMap<u16, CObject*, vem::detail::WordHash> {
    VEM_DECLARE_SERIAL(CMapWordToOb)
public:
    explicit CMapWordToOb(int blockSize = 10) { (void)blockSize; }
    void Serialize(CArchive& ar) override;  // count, then u16 key and object reference
};
