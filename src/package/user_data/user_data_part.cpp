#include <odfmodel/package/user_data.h>

#include "package/paths.h"

#include <utility>

namespace SDPackage {

UserDataPart::~UserDataPart() = default;

int UserDataPart::Init() {
    table_ = std::make_unique<UserDataModule>();
    if (table_->Load() != 0) {
        const unsigned short* const stream = table_->GetUserStreamName();
        if (stream && table_->GetUserPrefixName()) {
            extension_ = CTulStringW(u".xml");
            SetStreamName(stream);
            return 1;
        }
    }
    table_.reset();
    return 0;
}

int UserDataPart::IsAvailable() {
    return table_ ? 1 : Init();
}

void UserDataPart::SetStreamName(const unsigned short* stream) {
    std::u16string name(u"/");
    name += stream && *stream != 0 ? ToView(stream) : Units(u"userData");
    name += extension_.view();
    name_ = CTulStringW(name);
    ToUserForm(name_, partName_);
}

void UserDataPart::ToUserForm(const CTulStringW& in, CTulStringW& out) {
    if (IsAvailable() == 0) {
        out = in;
        return;
    }
    const auto slash = in.view().rfind(u'/');
    const std::size_t length = slash == Units::npos ? 0 : slash + 1;
    const unsigned short* const prefix = table_->GetUserPrefixName();
    CTulStringW form; // `in` and `out` may be one string
    form.Format(u"%s%s/%s%s", in.view().substr(0, length), prefix, prefix, in.view().substr(length));
    out = std::move(form);
}

} // namespace SDPackage
