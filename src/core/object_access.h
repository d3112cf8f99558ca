#pragma once

#include "core/arena.h"
#include "core/attribute_slots.h"
#include "core/class_descriptor.h"
#include "core/codecs.h"
#include "core/kept.h"
#include "core/value_pool.h"

#include <odfmodel/core/fidelity.h>
#include <odfmodel/core/foreign.h>
#include <odfmodel/core/object.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/core/value_objects.h>

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace ODF {

/// One attribute of a start tag as the reader has resolved it: the row of the class's table and the value in
/// UTF-8.
struct ReadValue {
    std::uint16_t row;
    std::string_view text;
};

/// What a parse brings along for the attributes of one element.
struct ReadSupply {
    ValuePool& pool;
    ValuePool::Usage* usage; ///< of each attribute of the class
    Arena* arena;            ///< has room for the attributes reserved, next to the object; null for the heap
    /// With full fidelity, the attributes that the class doesn't list; they are taken over. Null without.
    std::vector<KeptAttribute>* kept = nullptr;
};

/// What the XML reader and writer, and the reflection, may do with element objects beyond the virtual
/// operations: the quick ways for objects whose table tells all of them. A caller's own class has no table
/// and goes by the virtual operations.
class ObjectAccess {
public:
    /// The table of an element object that is read and written by it; null for any other object.
    static const ClassDescriptor* table(const CSDObject& object) noexcept {
        return object.hasFlag(CSDObject::kElement) ? object.Descriptor() : nullptr;
    }
    /// The table of an object of any element class, those with virtual operations of their own included.
    static const ClassDescriptor* descriptor(const CSDObject& object) noexcept { return object.Descriptor(); }
    static ClassInfo info(const ClassDescriptor& table) noexcept { return ClassInfo(table); }
    static bool isExtended(const CSDObject& object) noexcept { return object.hasFlag(CSDObject::kExtended); }
    static bool holdsText(const CSDObject& object) noexcept { return object.hasFlag(CSDObject::kText); }
    static bool keepsRuns(const CSDObject& object) noexcept { return object.hasFlag(CSDObject::kRuns); }
    /// An object of an element class that is read and written by its virtual operations: a date.
    static bool isDate(const CSDObject& object) noexcept {
        return !object.hasFlag(CSDObject::kElement) && object.Descriptor();
    }
    static bool isTextRun(const CSDObject& object) noexcept {
        return object.id_ == kTextRunId && object.hasFlag(CSDObject::kText) &&
               !object.hasFlag(CSDObject::kElement);
    }
    static CTulStringW& text(CSDObject& object) noexcept {
        return static_cast<CSDStringValueObject&>(object).value_;
    }
    static const CTulStringW& text(const CSDObject& object) noexcept {
        return static_cast<const CSDStringValueObject&>(object).value_;
    }
    static const std::vector<CSDObject*>& children(const CSDObject& object) noexcept {
        return static_cast<const CSDExtObject&>(object).children_;
    }
    static std::size_t childCount(const CSDObject& object) noexcept {
        return isExtended(object) ? children(object).size() : 0;
    }
    static std::uint64_t* slots(const CSDObject& object) noexcept { return object.slots_; }
    static bool isComment(const CSDObject& object) noexcept { return object.id_ == kCommentId; }
    static bool isInstruction(const CSDObject& object) noexcept {
        return object.id_ == kProcessingInstructionId;
    }
    static bool isForeign(const CSDObject& object) noexcept { return object.id_ == kForeignElementId; }
    static bool isMarkup(const CSDObject& object) noexcept {
        return isForeign(object) || isComment(object) || isInstruction(object);
    }
    /// The name of a foreign element.
    static ForeignName name(const CSDObject& foreign) noexcept;
    static void setName(CSDObject& foreign, const ForeignName& name) noexcept;
    static const ClassDescriptor& foreignTable() noexcept;

    static bool isFromFile(const CSDObject& object) noexcept { return object.hasFlag(CSDObject::kFromFile); }
    static void setFromFile(CSDObject& object) noexcept { object.setFlag(CSDObject::kFromFile, true); }
    /// Whether the value is what the file has: runs among the children, or the words of a date.
    static bool keepsValue(const CSDObject& object) noexcept { return object.hasFlag(CSDObject::kKeptValue); }
    static void setKeepsValue(CSDObject& object) noexcept { object.setFlag(CSDObject::kKeptValue, true); }
    static void joinRuns(CSDObject& object) {
        static_cast<CSDStringValueObject&>(object).JoinRuns(text(object));
    }
    /// What the object holds beyond its class; null when there is nothing.
    static Extras* extras(const CSDObject& object) noexcept;
    static Extras& requireExtras(CSDObject& object);

    /// A new object of the class T, from an arena that has room for it reserved, else from the heap.
    template<typename T>
    static CSDObject* make(unsigned id, Arena* arena) {
        static_assert(sizeof(T) <= kMaxObjectBytes);
        return arena ? new (arena->object(sizeof(T))) T(id) : new T(id);
    }
    static constexpr std::size_t kMaxObjectBytes = 128;
    /// A new object from the heap that is known to be in no child list, which spares looking for it.
    static CSDObject* makeLoose(const ClassDescriptor& table) { return makeLoose(table, table.id); }
    static CSDObject* makeLoose(const ClassDescriptor& table, unsigned id) {
        CSDObject* const object = table.make(id, nullptr);
        object->setFlag(CSDObject::kLoose, true);
        return object;
    }
    /// The child is, or is about to be, in the list of `parent` at `place`.
    static void setParent(CSDObject& child, CSDObject& parent, std::size_t place) noexcept {
        child.parent_ = &parent;
        constexpr std::uint32_t flags = (std::uint32_t{1} << CSDObject::kPlaceShift) - 1;
        child.flags_ = (child.flags_ & flags & ~CSDObject::kLoose) | static_cast<std::uint32_t>(place)
                                                                         << CSDObject::kPlaceShift;
    }
    /// The child is in no list any more.
    static void setLoose(CSDObject& child) noexcept {
        child.parent_ = nullptr;
        child.setFlag(CSDObject::kLoose, true);
    }
    /// Where the child is in the list; the list's size if it isn't there. Looks first where it once was.
    static std::size_t placeOf(const std::vector<CSDObject*>& list, const CSDObject& child) noexcept;
    /// The list that the object's children are in; null where it has none.
    static std::vector<CSDObject*>* list(CSDObject& object) {
        return isExtended(object) ? &static_cast<CSDExtObject&>(object).children_ : object.GetObjectList();
    }
    /// A copy of the object without its children; null when it can't be copied.
    static std::unique_ptr<CSDObject> cloneAlone(const CSDObject& object);
    /// A copy with all below it. What can't be copied below the object is left out, or else there is no copy.
    static std::unique_ptr<CSDObject> clone(const CSDObject& object, bool leavesOut);
    /// `Append` and `Insert` by the place in the list.
    static TreeChange insert(CSDObject& parent, std::size_t place, CSDObject* child) {
        return parent.attach(child, place);
    }

    /// Takes an attribute away; nothing happens where it is absent.
    static void unset(CSDObject& object, unsigned row) noexcept { object.UnsetAttribute(row); }

    /// `ReadAttribute` on resolved values: sets them and makes the child map known.
    static void readAttributes(CSDObject& object, const ClassDescriptor& table, std::span<ReadValue> values,
                               const ReadSupply& supply);
    /// Appends children whose root part and parent are set already. When memory runs out, none is. A parent
    /// whose class has no list for them keeps them as markup.
    static void append(CSDObject& parent, std::span<CSDObject* const> children) {
        auto& list = isExtended(parent) ? static_cast<CSDExtObject&>(parent).children_
                                        : requireExtras(parent).requireMarkup().content;
        list.insert(list.end(), children.begin(), children.end());
    }
    /// Puts a child, whose root part and parent are set already, before all others.
    static void prepend(CSDObject& parent, CSDObject* child) {
        auto& list = isExtended(parent) ? static_cast<CSDExtObject&>(parent).children_
                                        : requireExtras(parent).requireMarkup().content;
        list.insert(list.begin(), child);
    }

    /// Adds attributes that the object shall write as the file has them; `attributes` is empty then.
    static void keep(CSDObject& object, std::vector<KeptAttribute>& attributes);
    /// Room for `count` more of them.
    static void reserveKept(CSDObject& object, std::size_t count);

    /// The text of a set attribute, or of a required one's default, as it is written; not escaped.
    static CTulStringW attributeText(const CSDObject& object, const ClassDescriptor& table, unsigned row);
    /// Whether the attribute is written: set, or required.
    static bool isWritten(const CSDObject& object, const ClassDescriptor& table, unsigned row) noexcept;
};

/// What the value of one attribute is, as it is in a slot or as the default says.
struct AttributeValue {
    const AttributeRow& row;
    const std::uint64_t* slot;

    std::u16string_view text() const noexcept {
        return slot ? AttributeSlots::text(slot).view() : std::u16string_view();
    }
    std::uint32_t whole() const noexcept {
        return slot ? static_cast<std::uint32_t>(*slot) : row.defaultValue;
    }
    double number() const noexcept { return slot ? AttributeSlots::number(slot) : 0.0; }
    bool isText() const noexcept { return row.kind == ValueKind::String; }
    /// The key of an enumeration; empty for a value outside it.
    std::u16string_view key() const noexcept {
        const char16_t* const key = row.enumeration->key(static_cast<int>(whole()));
        return key ? std::u16string_view(key) : std::u16string_view();
    }
    bool isKey() const noexcept { return row.kind == ValueKind::Enumeration; }
    /// The ASCII text of a number or bool.
    NumberText plain() const noexcept;
    /// The same in the format's own spelling: a bool as a word, a number with all the digits that it has.
    NumberText spelled() const noexcept;
    /// Whether `spelled`, or the string or key itself, is exactly `text`.
    bool isSpelled(std::string_view text) const noexcept;
};

} // namespace ODF
