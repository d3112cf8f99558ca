#pragma once

#include <odfmodel/core/object.h>

#include <type_traits>

/// An element object without children that holds one value.
template<typename T, typename A>
class CSDValueObject : public CSDObject {
public:
    const T& Getval() const noexcept { return value_; }
    void Setval(A value) {
        value_ = value;
        setFlag(kKeptValue, false);
    }

protected:
    explicit CSDValueObject(unsigned id) noexcept : CSDObject(id) {}

    T value_{};
};

/// An element object with children that holds one value.
template<typename T, typename A>
class CSDExtValueObject : public CSDExtObject {
public:
    const T& Getval() const {
        if constexpr (std::is_same_v<T, CTulStringW>)
            if (hasFlag(kKeptValue)) JoinRuns(value_);
        return value_;
    }
    void Setval(A value) {
        value_ = value;
        if (hasFlag(kKeptValue)) DropRuns();
    }

protected:
    explicit CSDExtValueObject(unsigned id) noexcept : CSDExtObject(id) {}

    mutable T value_{}; // follows the runs where the file has them between children
};

extern template class ODFMODEL_API CSDValueObject<CTulStringW, const CTulStringW&>;
extern template class ODFMODEL_API CSDValueObject<SYSTEMTIME, const SYSTEMTIME&>;
extern template class ODFMODEL_API CSDExtValueObject<CTulStringW, const CTulStringW&>;

/// An element whose character content is its value; also a text run. The value is written before the
/// children.
class ODFMODEL_API CSDStringValueObject : public CSDExtValueObject<CTulStringW, const CTulStringW&> {
public:
    /// A new object with that id, owned by the caller.
    static CSDObject* Create(unsigned id);
    ~CSDStringValueObject() override;

    /// Takes the text when the value is empty, else appends it; false for a null or empty text.
    bool ReadNodeValue(const unsigned short* const text, unsigned length) override;
    bool WriteElement(const unsigned short* name, CSDSerializer* serializer,
                      CSDAttribute* attributes) override;

protected:
    CSDObject* CloneEmpty() const override;
    explicit CSDStringValueObject(unsigned id) noexcept : CSDExtValueObject(id) { setFlag(kText, true); }

private:
    friend class ODF::ObjectAccess;
};

/// An element that keeps its character data as text runs between its element children: paragraphs, headings,
/// spans. Its own value stays empty on reading; where a caller sets it, it is written before all children.
class ODFMODEL_API CSDMixedContentObject : public CSDStringValueObject {
public:
    ~CSDMixedContentObject() override;

    /// Appends an empty text run and returns it; give it its text with `Setval`. Owned by this object.
    CSDStringValueObject* SetText();
    /// The same with the text.
    CSDStringValueObject* SetText(const CTulStringW& text);
    /// Appends a text run that holds the text; false for a null or empty text.
    bool ReadNodeValue(const unsigned short* const text, unsigned length) override;

protected:
    explicit CSDMixedContentObject(unsigned id) noexcept : CSDStringValueObject(id) { setFlag(kRuns, true); }
};

/// An element whose character content is a date and time.
class ODFMODEL_API CSDDateTimeValueObject : public CSDValueObject<SYSTEMTIME, const SYSTEMTIME&> {
public:
    /// A new object with that id, owned by the caller.
    static CSDObject* Create(unsigned id);
    ~CSDDateTimeValueObject() override;

    /// Joins the pieces of text and scans the whole as "YYYY-MM-DDThh:mm:ss.mmm", as far as it fits. A month,
    /// day, hour, minute or second out of range gives the present time in UTC.
    bool ReadNodeValue(const unsigned short* const text, unsigned length) override;
    /// Writes all seven fields; writes nothing, and returns true, when a field is out of range.
    bool WriteElement(const unsigned short* name, CSDSerializer* serializer,
                      CSDAttribute* attributes) override;
    /// Null, but where a file has comments or elements in a date, which a tree of full fidelity keeps.
    std::vector<CSDObject*>* GetObjectList() const override;
    bool HasChildList() const override;

    /// The value as it is written; empty when a field is out of range.
    CTulStringW GetText() const;
    /// The text as it was read.
    const CTulStringW& GetRawText() const noexcept { return rawText_; }

protected:
    CSDObject* CloneEmpty() const override;
    explicit CSDDateTimeValueObject(unsigned id) noexcept : CSDValueObject(id) {}

private:
    friend class ODF::ObjectAccess;

    CTulStringW rawText_;
};
