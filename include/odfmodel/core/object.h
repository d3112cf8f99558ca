#pragma once

/// @file
/// The base of all elements of a tree.
///
///     ODF::Document document = ODF::Document::New(ODF::DocumentKind::Text);
///     auto& list = document.Text()->Append<ODF::CTextList>(); // owned by its parent
///     auto& item = list.Append<ODF::CTextListItem>();
///     ODF::SetText(item.Append<ODF::CTextP>(), "first");
///     list.Append(item.Clone());
///     for (const CSDObject& child : list.Children())
///         std::cout << ODF::Text(child) << '\n';
///     std::unique_ptr<CSDObject> taken = list.Detach(item); // owned by the caller
///     list.Append(std::move(taken));                        // and by the list again
///
/// An element is deleted with its parent, or by `Remove`. Attributes have accessors in the element classes;
/// text is in text runs, which document/text.h reads and changes.

#include <odfmodel/core/date_time.h>
#include <odfmodel/core/ranges.h>
#include <odfmodel/core/string.h>
#include <odfmodel/core/whole_value.h>
#include <odfmodel/export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <vector>

class CSDAttribute;
class CSDObject;
class CSDSerializer;
class ISDPart;

namespace ODF {
class Arena;
struct ClassDescriptor;
struct Extras;
class ObjectAccess;

/// Id of a text run: an unnamed `CSDStringValueObject` between the element children of a paragraph, heading
/// or span.
inline constexpr unsigned kTextRunId = 0x800002CC;
/// Id of a class outside this library that wants to be told its parent.
inline constexpr unsigned kParentAwareId = 0x1F000001;
/// Default id of `CSDCustomObject`.
inline constexpr unsigned kCustomObjectId = 0xF0000000;
} // namespace ODF

/// Root of all element objects: one object stands for one XML element (or one text run) of a part.
///
/// An object belongs to the child list of its parent; the root of a tree belongs to its document. Pointers
/// that the operations hand out are borrowed. Objects are told apart by their id, which each class has of its
/// own.
class ODFMODEL_API CSDObject {
public:
    CSDObject(const CSDObject&) = delete;
    CSDObject& operator=(const CSDObject&) = delete;
    virtual ~CSDObject();

    /// Makes the class's child map known to this object. Both orders of a map stand ready, so `sortByName`
    /// changes nothing; it stays for callers' own classes.
    virtual void InitMap(bool sortByName);
    /// Takes over `child`: gives it this object's root part and, unless `addToList` is 0, appends it to the
    /// children.
    virtual void SetObject(CSDObject* child, int addToList);
    /// Makes the child that is written under the qualified `name` (with its customary prefix), such as
    /// "text:p", and hands it to `SetObject`. Null when this class has no such child. With `addToList` 0 the
    /// caller owns it.
    virtual CSDObject* CreateObject(const unsigned short* name, int addToList);
    /// The children in document order, owned by this object; null while there never was one.
    virtual std::vector<CSDObject*>* GetObjectList() const;
    /// The first child with that id, or null.
    virtual CSDObject* GetObjectByID(unsigned id) const;
    /// Fills `out` with every child of that id in order and returns their number.
    virtual unsigned GetObjectListByID(unsigned id, std::vector<CSDObject*>& out) const;
    /// True when there is at least one child.
    virtual bool HasChildList() const;
    /// The name under which `child` is written below this object; null for a text run.
    virtual const unsigned short* FindObjectName(CSDObject* child);
    /// Called by `SetObject` on a child with the id `kParentAwareId` alone.
    virtual void SetParentObj(CSDObject* parent);
    /// The element name that the object itself holds, or null.
    virtual const unsigned short* GetElemName() const;
    /// Writes the element under `name` through `serializer`. False when nothing could be written.
    virtual bool WriteElement(const unsigned short* name, CSDSerializer* serializer,
                              CSDAttribute* attributes);
    /// Takes the attributes of the element's start tag.
    virtual bool ReadAttribute(CSDAttribute* attributes);
    /// Takes character content; `length` counts 16-bit units. False when the element has none and drops it.
    virtual bool ReadNodeValue(const unsigned short* const text, unsigned length);
    virtual bool IsMaintainObject();
    /// A list of texts for the caller's own use; made empty on the first call, owned by this object.
    virtual std::vector<CTulStringW>* GetMaintainElementList();
    /// Frees the list held so far and takes `list` over.
    virtual void SetMaintainElementList(std::vector<CTulStringW>* list);

    CSDObject* CreateObject(std::u16string_view name, int addToList) {
        return CreateObject(CTulStringW(name).c_str(), addToList);
    }
    CSDObject* CreateObject(std::string_view name, int addToList) {
        return CreateObject(CTulStringW(name).c_str(), addToList);
    }

    /// The element id, fixed at construction.
    unsigned GetID() const noexcept { return id_; }
    /// The part whose tree holds this object, not owned; null until it is set.
    ISDPart* GetRootpart() const noexcept { return rootPart_; }
    void SetRootpart(ISDPart* part) noexcept { rootPart_ = part; }
    /// Sets the part of this object and of everything below it.
    void SetReNewRootPart(ISDPart* part);
    /// A number for the caller's own use, 0 at first.
    unsigned GetErrorCode() const noexcept;
    void SetErrorCode(unsigned code);
    /// A mark for the caller's own use, false at first.
    bool GetIsFallback() const noexcept { return (flags_ & kFallback) != 0; }
    void SetIsFallback(bool fallback) noexcept { setFlag(kFallback, fallback); }

    /// @name Walking
    /// The ranges work with `for` and `std::ranges`; what they give out is borrowed from the tree.
    /// @{
    /// The object that has this one as a child; null for the root of a tree and for what is in none. Whoever
    /// changes the list that `GetObjectList` hands out has to use `Append`, `Insert` and `Detach` instead, or
    /// this stays as it was.
    CSDObject* Parent() noexcept { return parent_; }
    const CSDObject* Parent() const noexcept { return parent_; }
    /// The child of the same parent after this one, of any class, or null. Like `Previous` it takes constant
    /// time while few children have come and gone.
    CSDObject* Next() noexcept { return sibling(1); }
    const CSDObject* Next() const noexcept { return sibling(1); }
    /// The one before.
    CSDObject* Previous() noexcept { return sibling(-1); }
    const CSDObject* Previous() const noexcept { return sibling(-1); }
    /// The first child of the class T, or null.
    template<ODF::ElementClass T>
    T* Child() {
        return static_cast<T*>(GetObjectByID(T::kId));
    }
    template<ODF::ElementClass T>
    const T* Child() const {
        return static_cast<const T*>(GetObjectByID(T::kId));
    }
    /// The children of the class T in order; without a class all of them, text runs included.
    template<ODF::TreeClass T = CSDObject>
    ODF::ChildRange<T> Children() {
        return ODF::ChildRange<T>(GetObjectList());
    }
    template<ODF::TreeClass T = CSDObject>
    ODF::ChildRange<const T> Children() const {
        return ODF::ChildRange<const T>(GetObjectList());
    }
    /// The objects of the class T below this one, at any depth, in document order; without a class all.
    template<ODF::TreeClass T = CSDObject>
    ODF::DescendantRange<T> Descendants() {
        return ODF::DescendantRange<T>(GetObjectList());
    }
    template<ODF::TreeClass T = CSDObject>
    ODF::DescendantRange<const T> Descendants() const {
        return ODF::DescendantRange<const T>(GetObjectList());
    }
    /// @}

    /// @name Changing
    /// A child of a class that this one doesn't list is kept all the same, and is written under the name of
    /// its own class. The time of `Append` and `Insert` grows with what is below the child, and with the
    /// children of this object for a child that comes neither from `Create` nor from `Detach` nor from
    /// `Clone`.
    /// @{
    /// Puts `child` after the other children and sets the root part of all that it holds. When it is refused
    /// the caller keeps it; for `Listed` the pointer is given up, since the list owns the object already.
    /// Throws std::bad_alloc, and changes nothing, without memory.
    template<std::derived_from<CSDObject> T>
    ODF::TreeChange Append(std::unique_ptr<T>&& child) {
        return handOver(child, attach(child.get(), kAtEnd));
    }
    /// The same before `before`, a child of this object.
    template<std::derived_from<CSDObject> T>
    ODF::TreeChange Insert(std::unique_ptr<T>&& child, const CSDObject& before) {
        return handOver(child, attachBefore(child.get(), before));
    }
    /// Takes a child out with all that is below it, for the caller to own; it has no root part then. Null
    /// when it is no child of this object.
    [[nodiscard]] std::unique_ptr<CSDObject> Detach(CSDObject& child);
    /// Destroys a child with all that is below it; false when it is no child of this object.
    bool Remove(CSDObject& child);
    /// Takes this object, with all that is below it, from its parent and appends it to `to`, which may belong
    /// to another document. Nothing changes when it is refused; `NotAChild` is for an object without parent,
    /// which its owner has to hand over with `Append`. Throws std::bad_alloc, and changes nothing, without
    /// memory.
    ODF::TreeChange MoveTo(CSDObject& to);
    /// A copy with all that is below the object and all that a tree of full fidelity keeps of its file. It
    /// has no root part, and nothing of it belongs to the original. Null when a class of the caller's own
    /// below it has no `CloneEmpty`.
    [[nodiscard]] std::unique_ptr<CSDObject> Clone() const;
    /// @}

    /// @name Attributes by name
    /// Names are qualified with the customary prefix, such as "text:style-name"; those of attributes that the
    /// class doesn't list with the prefix that their file has.
    /// @{
    /// Whether the attribute is set, by a file or by a caller.
    bool HasAttribute(std::string_view name) const;
    /// Takes the attribute away; false when it isn't set. One that is written always has its default then.
    bool Unset(std::string_view name);
    /// @}

    /// Destroys `object` with everything below it; null is ignored.
    static void Delete(CSDObject* object);

    /// @name Memory
    /// Objects that a parse has made share blocks of memory, others come from the heap; `delete` knows.
    /// @{
    static void* operator new(std::size_t byteCount);
    static void* operator new(std::size_t byteCount, std::align_val_t alignment);
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* place) noexcept;
    static void operator delete(void* place, std::align_val_t alignment) noexcept;
    static void operator delete(void*, void*) noexcept {}
    /// @}

protected:
    explicit CSDObject(unsigned id) noexcept : id_(id) {}

    /// The value of `key` in the enumeration `enumName`; 0 when the group of `id`, the enumeration or the key
    /// isn't known.
    static int _FindEnumValue(unsigned id, const unsigned short* enumName, const CTulStringW& key);
    /// The key of `value`, or null when there is none.
    static const unsigned short* _FindEnumKey(unsigned id, const unsigned short* enumName, int value);

    /// The constant table of the object's class; null for a class that is no element class.
    virtual const ODF::ClassDescriptor* Descriptor() const noexcept;

    /// A new object like this one, without children and attributes, owned by the caller. A class of the
    /// caller's own that can be copied has one; null is for one that can't.
    virtual CSDObject* CloneEmpty() const;

    // Attribute values of the element classes, by the row of their table.
    void ReleaseAttributes(const ODF::ClassDescriptor& table) noexcept;
    bool HasAttribute(const ODF::ClassDescriptor& table, unsigned row) const noexcept;
    bool GetAttribute(const ODF::ClassDescriptor& table, unsigned row, CTulStringW& out) const noexcept;
    bool GetAttribute(const ODF::ClassDescriptor& table, unsigned row, bool& out) const noexcept;
    bool GetAttribute(const ODF::ClassDescriptor& table, unsigned row, unsigned& out) const noexcept;
    bool GetAttribute(const ODF::ClassDescriptor& table, unsigned row, int& out) const noexcept;
    bool GetAttribute(const ODF::ClassDescriptor& table, unsigned row, double& out) const noexcept;
    bool GetAttribute(const ODF::ClassDescriptor& table, unsigned row, float& out) const noexcept;
    void SetAttribute(const ODF::ClassDescriptor& table, unsigned row, const CTulStringW& value);
    void SetAttribute(const ODF::ClassDescriptor& table, unsigned row, bool value);
    void SetAttribute(const ODF::ClassDescriptor& table, unsigned row, unsigned value);
    void SetAttribute(const ODF::ClassDescriptor& table, unsigned row, int value);
    void SetAttribute(const ODF::ClassDescriptor& table, unsigned row, double value);
    void SetAttribute(const ODF::ClassDescriptor& table, unsigned row, float value);
    void SetRawAttribute(const ODF::ClassDescriptor& table, unsigned row, std::uint64_t value);
    /// Takes the attribute away; false when it isn't set.
    bool UnsetAttribute(unsigned row) noexcept;
    /// A number as the format spells it, with all the digits that it has.
    static CTulStringW SpellNumber(double number);
    /// All of a value that may be more than its type holds; nothing while it isn't set.
    std::optional<ODF::WholeValue> WholeAttribute(unsigned row) const;
    /// Sets it from a string as reading a file does.
    void SetWholeAttribute(unsigned row, std::string_view value);
    /// True when both objects, of the class of `table`, agree in every attribute.
    static bool SameAttributes(const ODF::ClassDescriptor& table, const CSDObject& a,
                               const CSDObject& b) noexcept;

    static constexpr std::uint32_t kFallback = 1;  ///< the caller's mark
    static constexpr std::uint32_t kMapReady = 2;  ///< `InitMap` has run
    static constexpr std::uint32_t kElement = 4;   ///< made by an element class: the table tells all of it
    static constexpr std::uint32_t kExtended = 8;  ///< a `CSDExtObject`
    static constexpr std::uint32_t kText = 16;     ///< a `CSDStringValueObject`
    static constexpr std::uint32_t kRuns = 32;     ///< a `CSDMixedContentObject`
    static constexpr std::uint32_t kFromFile = 64; ///< read with full fidelity: nothing is written by default
    /// The value is what the file has: the runs among the children, or the words of a date.
    static constexpr std::uint32_t kKeptValue = 128;
    static constexpr std::uint32_t kLoose = 256; ///< made, detached or copied, and in no child list since
    /// From this bit on: about where the object is in the list of its parent.
    static constexpr unsigned kPlaceShift = 12;
    bool hasFlag(std::uint32_t flag) const noexcept { return (flags_ & flag) != 0; }
    void setFlag(std::uint32_t flag, bool on) noexcept { flags_ = on ? flags_ | flag : flags_ & ~flag; }

private:
    friend class ODF::ObjectAccess;

    static constexpr std::size_t kAtEnd = std::size_t(-1);
    /// `isElsewhere`: the child is known to be in another list, which spares looking for it in this one.
    ODF::TreeChange attach(CSDObject* child, std::size_t place, bool isElsewhere = false);
    ODF::TreeChange attachBefore(CSDObject* child, const CSDObject& before);
    CSDObject* sibling(std::ptrdiff_t step) const noexcept;
    template<typename T>
    static ODF::TreeChange handOver(std::unique_ptr<T>& child, ODF::TreeChange result) noexcept {
        if (result == ODF::TreeChange::Done || result == ODF::TreeChange::Listed)
            child.release(); // NOLINT(bugprone-unused-return-value): the list has it
        return result;
    }

    void releaseExtras(const ODF::ClassDescriptor* table) noexcept;
    /// The attribute has a value of the caller's: the words of the file go.
    void forgetWords(const ODF::ClassDescriptor& table, unsigned row) noexcept;

    unsigned id_;
    std::uint32_t flags_ = 0;
    ISDPart* rootPart_ = nullptr;
    CSDObject* parent_ = nullptr;
    /// Presence bits and values of what is set, see attribute_slots.h; null while nothing is.
    std::uint64_t* slots_ = nullptr;
};

inline unsigned ODF::detail::IdOf(const CSDObject& object) noexcept {
    return object.GetID();
}
inline std::vector<CSDObject*>* ODF::detail::ListOf(const CSDObject& object) {
    return object.GetObjectList();
}

namespace ODF {
/// `CSDObject::Clone` for an object whose class is known.
template<std::derived_from<CSDObject> T>
[[nodiscard]] std::unique_ptr<T> CloneOf(const T& object) {
    return std::unique_ptr<T>(static_cast<T*>(object.Clone().release()));
}
} // namespace ODF

/// An element object with children: the base of all element classes without character content.
class ODFMODEL_API CSDExtObject : public CSDObject {
public:
    ~CSDExtObject() override;

    using CSDObject::CreateObject;
    void InitMap(bool sortByName) override;
    void SetObject(CSDObject* child, int addToList) override;
    CSDObject* CreateObject(const unsigned short* name, int addToList) override;
    std::vector<CSDObject*>* GetObjectList() const override;
    CSDObject* GetObjectByID(unsigned id) const override;
    unsigned GetObjectListByID(unsigned id, std::vector<CSDObject*>& out) const override;
    bool HasChildList() const override;
    const unsigned short* FindObjectName(CSDObject* child) override;
    bool WriteElement(const unsigned short* name, CSDSerializer* serializer,
                      CSDAttribute* attributes) override;
    bool ReadAttribute(CSDAttribute* attributes) override;

    using CSDObject::Append;
    using CSDObject::Insert;
    /// Appends a new child of the class T, owned by this object, and returns it.
    template<ODF::MakeableClass T>
    T& Append() {
        return static_cast<T&>(*Adopt(T::Create()));
    }
    /// The same before `before`; null, and no child is kept, when that is no child of this object.
    template<ODF::MakeableClass T>
    T* Insert(const CSDObject& before) {
        std::unique_ptr<CSDObject> made(T::Create());
        T* const child = static_cast<T*>(made.get());
        return Insert(std::move(made), before) == ODF::TreeChange::Done ? child : nullptr;
    }

    /// Number of children.
    unsigned GetChildCount() const noexcept { return static_cast<unsigned>(children_.size()); }

protected:
    explicit CSDExtObject(unsigned id) noexcept : CSDObject(id) { setFlag(kExtended, true); }

    /// Takes `child` over as `SetObject(child, 1)` does and returns it.
    CSDObject* Adopt(CSDObject* child);
    /// Adds the attributes of an element class to `attributes`, in its writing order.
    void WriteAttributes(CSDAttribute* attributes) const;
    /// Makes `value` what the text runs among the children say together.
    void JoinRuns(CTulStringW& value) const;
    /// Deletes the text runs among the children: the value takes their place.
    void DropRuns() noexcept;

private:
    friend class ODF::ObjectAccess;

    mutable std::vector<CSDObject*> children_; // handed out by GetObjectList() const
};

/// An element object that holds its own element name: the base of the root elements.
class ODFMODEL_API CSDNamedObject : public CSDExtObject {
public:
    ~CSDNamedObject() override;

    /// The element name, empty until it is set; never null.
    const unsigned short* GetElemName() const override;
    void SetElemName(const unsigned short* name);
    void SetElemName(std::u16string_view name) { elemName_ = CTulStringW(name); }
    void SetElemName(std::string_view name) { elemName_ = CTulStringW(name); }

protected:
    explicit CSDNamedObject(unsigned id) noexcept : CSDExtObject(id) {}

private:
    CTulStringW elemName_;
};

/// A named object that reads and writes nothing; a base for callers' own classes.
class ODFMODEL_API CSDCustomObject : public CSDNamedObject {
public:
    ~CSDCustomObject() override;

    using CSDNamedObject::CreateObject;
    CSDObject* CreateObject(const unsigned short* name, int addToList) override;
    bool ReadAttribute(CSDAttribute* attributes) override;
    bool WriteElement(const unsigned short* name, CSDSerializer* serializer,
                      CSDAttribute* attributes) override;

protected:
    explicit CSDCustomObject(unsigned id = ODF::kCustomObjectId) noexcept : CSDNamedObject(id) {}
};
