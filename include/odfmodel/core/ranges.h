#pragma once

#include <odfmodel/export.h>

#include <concepts>
#include <cstddef>
#include <iterator>
#include <string_view> // declares what std::ranges asks about a range
#include <type_traits>
#include <utility>
#include <vector>

/// @file
/// The ranges over a tree that `CSDObject::Children` and `CSDObject::Descendants` return.

class CSDObject;

namespace ODF {

/// An element class: one with an id of its own, by which its objects are recognised.
template<typename T>
concept ElementClass = std::derived_from<T, CSDObject> && requires {
    { T::kId } -> std::convertible_to<unsigned>;
};
/// An element class, or `CSDObject` for objects of any class.
template<typename T>
concept TreeClass = std::same_as<T, CSDObject> || ElementClass<T>;
/// An element class of which an object can be made without being told more.
template<typename T>
concept MakeableClass = ElementClass<T> && requires {
    { T::Create() } -> std::same_as<CSDObject*>;
};
/// A string literal or another pointer, which C++ would convert to bool.
template<typename T>
concept PointerLike = std::convertible_to<const T&, const volatile void*>;

namespace detail {
unsigned IdOf(const CSDObject& object) noexcept;
std::vector<CSDObject*>* ListOf(const CSDObject& object);

/// Whether an entry of a child list is an object of the class T.
template<typename T>
bool Is(const CSDObject* object) noexcept {
    using Class = std::remove_const_t<T>;
    if constexpr (std::is_same_v<Class, CSDObject>)
        return object != nullptr;
    else
        return object && IdOf(*object) == Class::kId;
}

/// What a forward iterator over objects of the class T tells of itself.
template<typename T>
struct ForwardOver {
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::forward_iterator_tag;
    using value_type = std::remove_const_t<T>;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    friend bool operator==(const ForwardOver&, const ForwardOver&) noexcept = default;
};
} // namespace detail

/// Goes through a child list, past the objects of other classes. Places are numbers, so objects may be
/// appended on the way; after another change of the list go on from a new range.
template<typename T>
class ChildIterator : public detail::ForwardOver<T> {
public:
    ChildIterator() = default;
    explicit ChildIterator(const std::vector<CSDObject*>* list) noexcept : list_(list) { settle(); }

    T& operator*() const noexcept { return static_cast<T&>(*(*list_)[at_]); }
    T* operator->() const noexcept { return &**this; }
    ChildIterator& operator++() noexcept {
        ++at_;
        settle();
        return *this;
    }
    ChildIterator operator++(int) noexcept {
        ChildIterator before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(const ChildIterator&, const ChildIterator&) noexcept = default;
    friend bool operator==(const ChildIterator& at, std::default_sentinel_t) noexcept {
        return !at.list_ || at.at_ >= at.list_->size();
    }

private:
    void settle() noexcept {
        while (list_ && at_ < list_->size() && !detail::Is<T>((*list_)[at_]))
            ++at_;
    }

    const std::vector<CSDObject*>* list_ = nullptr;
    std::size_t at_ = 0;
};

/// The children of one class, in order. Holds a pointer alone; valid as long as the parent.
template<typename T>
class ChildRange {
public:
    explicit ChildRange(const std::vector<CSDObject*>* list) noexcept : list_(list) {}

    ChildIterator<T> begin() const noexcept { return ChildIterator<T>(list_); }
    std::default_sentinel_t end() const noexcept { return {}; }
    bool empty() const noexcept { return begin() == end(); }

private:
    const std::vector<CSDObject*>* list_;
};

/// Goes through all that is below an object, each object before its children, with a stack as high as the
/// tree is deep. Objects may be appended on the way; after another change go on from a new range.
template<typename T>
class DescendantIterator : public detail::ForwardOver<T> {
public:
    DescendantIterator() = default;
    explicit DescendantIterator(const std::vector<CSDObject*>* list) {
        descend(list);
        settle();
    }

    T& operator*() const noexcept { return static_cast<T&>(*current()); }
    T* operator->() const noexcept { return &**this; }
    DescendantIterator& operator++() {
        step();
        settle();
        return *this;
    }
    DescendantIterator operator++(int) {
        DescendantIterator before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(const DescendantIterator&, const DescendantIterator&) = default;
    friend bool operator==(const DescendantIterator& at, std::default_sentinel_t) noexcept {
        return at.levels_.empty();
    }

private:
    CSDObject* current() const noexcept { return (*levels_.back().first)[levels_.back().second]; }
    void descend(const std::vector<CSDObject*>* list) {
        if (list && !list->empty()) levels_.emplace_back(list, 0);
    }
    void step() {
        const CSDObject* const object = current();
        ++levels_.back().second;
        if (object) descend(detail::ListOf(*object));
    }
    void settle() {
        while (!levels_.empty()) {
            if (levels_.back().second >= levels_.back().first->size())
                levels_.pop_back();
            else if (detail::Is<T>(current()))
                return;
            else
                step();
        }
    }

    std::vector<std::pair<const std::vector<CSDObject*>*, std::size_t>> levels_; ///< lists and places in them
};

/// The objects of one class below an object, in document order.
template<typename T>
class DescendantRange {
public:
    explicit DescendantRange(const std::vector<CSDObject*>* list) noexcept : list_(list) {}

    DescendantIterator<T> begin() const { return DescendantIterator<T>(list_); }
    std::default_sentinel_t end() const noexcept { return {}; }
    bool empty() const { return begin() == end(); }

private:
    const std::vector<CSDObject*>* list_;
};

/// What became of a request to put an object into a tree.
enum class TreeChange {
    Done,
    NoObject,    ///< the pointer was null
    OwnAncestor, ///< it is the parent itself or above it
    Listed,      ///< it is a child of that parent already
    NotAChild,   ///< the object to insert before is no child of that parent
    NoList,      ///< the parent's class holds no children
};

} // namespace ODF

// Both are a pointer into the tree, and their iterators outlive them.
template<typename T>
inline constexpr bool std::ranges::enable_view<ODF::ChildRange<T>> = true;
template<typename T>
inline constexpr bool std::ranges::enable_view<ODF::DescendantRange<T>> = true;
template<typename T>
inline constexpr bool std::ranges::enable_borrowed_range<ODF::ChildRange<T>> = true;
template<typename T>
inline constexpr bool std::ranges::enable_borrowed_range<ODF::DescendantRange<T>> = true;
