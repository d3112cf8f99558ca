// Shows the metadata of a document and sets title, date and a field of one's own.  metadata IN OUT TITLE
#include <odfmodel/odfmodel.h>

#include <iostream>

using namespace ODF;

/// The child of that class; made when it isn't there.
template<typename T>
T& Get(COfficeMeta& meta) {
    T* const found = meta.Child<T>();
    return found ? *found : meta.Append<T>();
}

int main(int argc, char** argv) {
    Document document;
    if (argc != 4 || !document.Open(argv[1])) return 1;
    CSDObject* root = document.Meta();
    if (document.IsFlat()) root = document.Flat();
    COfficeMeta* const found = root ? root->Child<COfficeMeta>() : nullptr;
    if (!found) return 1;
    COfficeMeta& meta = *found;
    for (const CSDObject& entry : meta.Children())
        if (const auto info = ClassOf(entry))
            std::cout << info->elementName() << ": " << TextOf(entry) << '\n';
    if (const auto* time = meta.Child<CMetaEditingDuration>())
        if (const auto duration = Duration::Parse(Text(*time)))
            std::cout << "edited for " << duration->TotalSeconds().value_or(0) / 60 << " minutes\n";

    SetText(Get<CDcTitle>(meta), argv[3]);
    Get<CDcDate>(meta).Setval(DateTime::Parse("2024-01-31T12:30:00")->ToSystemTime());
    auto& field = meta.Append<CMetaUserDefined>();
    field.SetMetaName("Department");
    SetText(field, "Sales");
    return document.Save(argv[2]) ? 0 : 1;
}
