// Typed setters and attributes by name with any 16-bit units and numbers: what is written is well-formed, and
// is written again as it was.
#include <odfmodel/odfmodel.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

/// Takes numbers and strings from the input; 0 and empty ones when it is used up.
class Input {
public:
    Input(const unsigned char* data, std::size_t size) noexcept : at_(data), end_(data + size) {}
    bool isEmpty() const noexcept { return at_ == end_; }
    template<typename Number>
    Number number() noexcept {
        Number value{};
        const auto count = std::min<std::size_t>(sizeof(value), static_cast<std::size_t>(end_ - at_));
        std::memcpy(&value, at_, count);
        at_ += count;
        return value;
    }
    std::u16string text() {
        std::u16string units(number<unsigned char>() % 40, u'\0');
        for (char16_t& unit : units)
            unit = number<char16_t>();
        return units;
    }

private:
    const unsigned char* at_;
    const unsigned char* end_;
};

void Change(ODF::CTextP& paragraph, Input& input) {
    switch (input.number<unsigned char>() % 9) {
    case 0:
        paragraph.SetTextStyleName(CTulStringW(input.text()));
        break;
    case 1:
        paragraph.SetText(CTulStringW(input.text()));
        break;
    case 2:
        paragraph.SetTextSpan()->SetText(CTulStringW(input.text()));
        break;
    case 3:
        paragraph.SetTextA()->SetXlinkHref(CTulStringW(input.text()));
        break;
    case 4:
        paragraph.SetTextS()->SetTextC(input.number<unsigned>());
        break;
    case 5:
        paragraph.SetTextBookmark()->SetTextName(CTulStringW(input.text()));
        break;
    case 6:
        ODF::SetText(paragraph, ODF::ToUtf8(input.text()));
        break;
    case 7:
        ODF::ReplaceText(paragraph, ODF::ToUtf8(input.text()), ODF::ToUtf8(input.text()));
        break;
    default:
        static_cast<ODF::CTableTableCell&>(
            static_cast<CSDExtObject&>(paragraph).Append<ODF::CTableTableCell>())
            .SetOfficeValue(input.number<double>());
        break;
    }
}

std::string Trip(const std::string& xml, const CSDObject& like, ODF::Fidelity fidelity) {
    const std::unique_ptr<CSDObject> read(ODF::ClassOf(like)->create());
    if (!ODF::FromXml(xml, *read, fidelity)) std::abort();
    return ODF::ToXml(*read, {}, fidelity);
}

/// What was made in memory may be written in another form than what comes from a file; after that it stays.
void CheckTrip(CSDObject& object, ODF::Fidelity fidelity) {
    const std::string twice = Trip(ODF::ToXml(object, {}, fidelity), object, fidelity);
    if (fidelity == ODF::Fidelity::Everything && Trip(twice, object, fidelity) != twice) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const std::vector<ODF::ClassInfo> classes = ODF::AllClasses();
    Input input(data, size);
    const std::unique_ptr<CSDObject> any(classes[input.number<std::uint16_t>() % classes.size()].create());
    if (const auto attributes = ODF::ClassOf(*any)->attributes(); !attributes.empty())
        for (int i = 0; i < 3; ++i) {
            const std::string_view name = attributes[input.number<unsigned char>() % attributes.size()].name;
            ODF::SetAttributeText(*any, name, ODF::ToUtf8(input.text()));
            if (input.number<unsigned char>() % 4 == 0) any->Unset(name);
        }
    const std::unique_ptr<CSDObject> made(ODF::CTextP::Create());
    while (!input.isEmpty())
        Change(static_cast<ODF::CTextP&>(*made), input);
    for (const ODF::Fidelity fidelity : {ODF::Fidelity::Listed, ODF::Fidelity::Everything}) {
        CheckTrip(*any, fidelity);
        CheckTrip(*made, fidelity);
        CheckTrip(*made->Clone(), fidelity);
    }
    return 0;
}
