#include <odfmodel/document/text.h>

#include "core/object_access.h"
#include "document/text/paragraph_text.h"

#include <utility>

namespace ODF {
namespace {

std::unique_ptr<CSDObject> MakeRun(const CTulStringW& text) {
    std::unique_ptr<CSDObject> run(CSDStringValueObject::Create(kTextRunId));
    ObjectAccess::text(*run) = text;
    return run;
}

/// Whether a blank after what is before `place` would be dropped; that is taken to be so where it
/// isn't known.
bool IsAfterBlank(const std::vector<CSDObject*>& list, std::size_t place) {
    if (place == 0 || !list[place - 1]) return true;
    const CSDObject& object = *list[place - 1];
    std::u16string text;
    if (ObjectAccess::isTextRun(object))
        text = ObjectAccess::text(object).view();
    else if (IsInline(object))
        text = Text16(object);
    return text.empty() || text.back() <= u' ';
}

} // namespace

bool AddText(CSDObject& element, std::string_view text, const CSDObject* before) {
    if (!ObjectAccess::holdsText(element) || ObjectAccess::isMarkup(element)) return false;
    std::vector<CSDObject*>& list = *ObjectAccess::list(element);
    std::size_t place = before ? ObjectAccess::placeOf(list, *before) : list.size();
    if (before && place == list.size()) return false;
    const bool isPlain = !IsParagraph(element) && !IsInline(element);
    if (isPlain && list.empty()) {
        CTulStringW value = ObjectAccess::text(element);
        if (!value.Append(ToUtf16(text))) throw std::bad_alloc();
        static_cast<CSDStringValueObject&>(element).Setval(value);
        return true;
    }
    std::vector<std::unique_ptr<CSDObject>> made;
    if (isPlain)
        made.push_back(MakeRun(CTulStringW(text)));
    else
        made = EncodeText(ToUtf16(text), IsAfterBlank(list, place), true);
    // A value is written before all children, and follows the runs once there are some.
    const bool hasValue = !ObjectAccess::keepsRuns(element) && !ObjectAccess::keepsValue(element) &&
                          !ObjectAccess::text(element).IsEmpty();
    std::unique_ptr<CSDObject> front = hasValue ? MakeRun(ObjectAccess::text(element)) : nullptr;
    list.reserve(list.size() + made.size() + 1); // nothing fails from here on
    const auto put = [&](std::unique_ptr<CSDObject> object, std::size_t at) {
        object->SetRootpart(element.GetRootpart());
        ObjectAccess::setParent(*object, element, at);
        list.insert(list.begin() + static_cast<std::ptrdiff_t>(at), object.release());
    };
    if (front) {
        put(std::move(front), 0);
        ++place;
    }
    for (std::unique_ptr<CSDObject>& object : made)
        put(std::move(object), place++);
    if (!ObjectAccess::keepsRuns(element)) {
        ObjectAccess::setKeepsValue(element);
        ObjectAccess::joinRuns(element);
    }
    return true;
}

} // namespace ODF
