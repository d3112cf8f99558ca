#include "package/fixture.h"

#include <odfmodel/package/storage.h>
#include <odfmodel/platform/memory_mapping.h>

#include <cstring>
#include <list>

using namespace package_test;
using namespace SDPackage;

namespace {

using sd::SDDocType;

const std::string kUserDataType = "application/vnd.tul-userdata.dat";
const std::string kUserMainType = "application/vnd.tul-officedocument.presentationml.presentation.main+xml";

class UserData : public PackageTest {
protected:
    ~UserData() override {
        while (!variables_.empty()) // the one that was set last first
            variables_.pop_back();
    }

    /// Names the module in the user's settings.
    void install(const std::string& module = SAMPLE_MODULE) const {
        WriteFile(at("config/odfmodel/settings.ini"),
                  "[Software\\TUL\\Shared\\Serializer]\nmodule = " + module + "\n");
    }
    std::string log() const { return ReadFile(at("module.log")); }
    void clearLog() const { fs::remove(at("module.log")); }

    /// A storage file whose stream holds `bytes`.
    std::string makeStorage(std::string_view name, const std::string& bytes,
                            const char* stream = "greeting") const {
        IStorage* const storage = CreateStorage(CTulStringW(text(name)));
        EXPECT_NE(storage, nullptr);
        IStream* const made = storage->CreateStream(stream);
        made->Write(bytes.data(), static_cast<unsigned>(bytes.size()));
        made->Release();
        EXPECT_NE(storage->Release(), 0);
        return text(name);
    }

    static std::string readStorage(const std::string& path, const char* stream = "greeting") {
        IStorage* const storage = OpenStorage(CTulStringW(path));
        if (!storage) return "(no storage)";
        std::string bytes = "(no stream)";
        if (IStream* const held = storage->OpenStream(stream)) {
            bytes.assign(held->GetSize(), '\0');
            held->Read(bytes.data(), static_cast<unsigned>(bytes.size()));
            held->Release();
        }
        storage->Release();
        return bytes;
    }

    void set(const char* name, const std::string& value) { variables_.emplace_back(name, value); }

private:
    std::list<ScopedVariable> variables_;
    ScopedVariable config_{"XDG_CONFIG_HOME", text("config")};
    ScopedVariable log_{"SAMPLE_MODULE_LOG", text("module.log")};
};

} // namespace

TEST_F(UserData, NothingChangesUntilAModuleIsFoundThroughTheSettings) {
    const auto package = newPackage();
    UserDataPart& part = *package->GetUserDataPart();
    CTulStringW out;
    EXPECT_EQ(package->HasUserDataModule(), 0);
    EXPECT_TRUE(package->GetUserPrefix().IsEmpty());
    EXPECT_EQ(part.IsAvailable(), 0);
    part.ToUserForm(CTulStringW(u"/a/b"), out);
    EXPECT_EQ(out, "/a/b");
    EXPECT_EQ(package->ExchangeStorage(text("s"), 0, 1), 0);
    EXPECT_EQ(package->ConvertUserDataFile(makePresentation()), 0);
    package->SetUseUserData(1);
    ASSERT_NE(package->Open(text("a.pptx")), 0);
    EXPECT_EQ(Names(saved(*package, "b.pptx")), Names(ReadPackage(text("a.pptx"))));

    install();
    EXPECT_NE(package->HasUserDataModule(), 0) << "looked for anew";
    EXPECT_EQ(package->GetUserPrefix(), "Ab");
    EXPECT_EQ(part.IsAvailable(), 1);
    EXPECT_EQ(part.GetName(), "/greeting.xml");
    EXPECT_EQ(part.GetPartName(), "/Ab/Abgreeting.xml");
    constexpr const char* rows[][2] = {
        {"/ppt/media/a.bin", "/ppt/media/Ab/Aba.bin"}, {"a.bin", "Ab/Aba.bin"}, {"/", "/Ab/Ab"}};
    for (const auto& [name, form] : rows) {
        part.ToUserForm(CTulStringW(name), out);
        EXPECT_EQ(out, form);
    }
}

TEST_F(UserData, UnusableModulesCountAsNone) {
    for (const std::string& module :
         {text("none.so"), std::string(BROKEN_MODULE), std::string("no-such-module.so")}) {
        install(module);
        EXPECT_EQ(newPackage()->HasUserDataModule(), 0) << module;
    }
    install();
    set("SAMPLE_MODULE_PREFIX", "null");
    EXPECT_NE(newPackage()->HasUserDataModule(), 0);
    EXPECT_EQ(newPackage()->GetUserDataPart()->IsAvailable(), 0);
    set("SAMPLE_MODULE_PREFIX", "Ab");
    set("SAMPLE_MODULE_STREAM", "");
    EXPECT_EQ(newPackage()->GetUserDataPart()->GetName(), "/userData.xml");
    set("SAMPLE_MODULE_STREAM", "null");
    EXPECT_EQ(newPackage()->GetUserDataPart()->IsAvailable(), 0);
}

TEST_F(UserData, IndexTakesTheUserForm) {
    install();
    UserDataConverter converter;
    IContentTypes types;
    types.AddOverride("/xl/workbook.xml", "w");
    types.AddOverride("/ppt/presentation.xml", kPresentationType);
    converter.RewriteContentTypes(&types);
    EXPECT_EQ(Utf8(types.GetContentType("/ppt/Abpresentation.xml", nullptr)), kUserMainType);
    EXPECT_EQ(Utf8(types.GetContentType("/xl/workbook.xml", nullptr)), "w") << "one at a time";
    converter.RewriteContentTypes(&types); // now the workbook; the data member is there already
    EXPECT_NE(types.GetContentType("/xl/Abworkbook.xml", nullptr), nullptr);
    EXPECT_EQ(types.GetContentType("/xl/UserData.dat", nullptr), nullptr);
    EXPECT_EQ(Utf8(types.FindPartName(kUserDataType)), "/ppt/UserData.dat");

    constexpr const char* records[][3] = {{"officeDocument", "word/document.xml", "word/Abdocument.xml"},
                                          {"officeDocument", "odd/document.xml", "odd/document.xml"},
                                          {"slide", "word/document.xml", "word/document.xml"}};
    for (const auto& [type, target, rewritten] : records) {
        RelationshipRecord record{u"r", kOfficeRelation + std::string(type), target};
        converter.RewriteRelationship(record);
        EXPECT_EQ(record.target, rewritten);
        EXPECT_EQ(record.type.utf8().ends_with("/office/2017/relationships/officeDocument"),
                  type == std::string("officeDocument"));
    }
    constexpr const char* names[][2] = {{"ppt/presentation.xml", "ppt/Abpresentation.xml"},
                                        {"xl/_rels/workbook.xml.rels", "xl/_rels/Abworkbook.xml.rels"},
                                        {"word/document.xml2", "word/document.xml2"}};
    for (const auto& [before, after] : names) {
        CTulStringW name(before);
        converter.RewriteItemName(name);
        EXPECT_EQ(name, after);
    }
    EXPECT_EQ(UserDataConverter::UserDataItemName(SDDocType::DocTypeTulWordDocument), "word/UserData.dat");
    EXPECT_TRUE(UserDataConverter::UserDataItemName(SDDocType::DocTypeWorkbookMacro).IsEmpty());
}

#ifdef ODFMODEL_USER_DATA

TEST_F(UserData, StoragesAreUpdatedInPlace) {
    const std::string path = makeStorage("s", "first");
    IStorage* storage = OpenStorage(CTulStringW(path));
    ASSERT_NE(storage, nullptr);
    IStream* other = storage->CreateStream("other");
    other->Seek(3);
    EXPECT_EQ(other->Write("xyz", 3), 3U);
    EXPECT_EQ(other->Tell(), 6U);
    other->Release();
    EXPECT_EQ(storage->OpenStream("missing"), nullptr);
    EXPECT_EQ(storage->CreateStream("a/b"), nullptr);
    EXPECT_EQ(storage->CreateStream(std::string(32, 'n')), nullptr);
    EXPECT_EQ(storage->CreateStream(nullptr), nullptr);
    EXPECT_NE(storage->Release(), 0);
    EXPECT_EQ(readStorage(path), "first");
    EXPECT_EQ(readStorage(path, "GREETING"), "first");
    EXPECT_EQ(readStorage(path, "other"), std::string("\0\0\0xyz", 6));

    const std::string large(100'000, 'l');
    makeStorage("s", large);
    EXPECT_EQ(readStorage(path), large);
    EXPECT_EQ(readStorage(path, "other"), "(no stream)") << "created in place of the old one";
}

TEST_F(UserData, FilesThatAreNoStoragesAreRefused) {
    EXPECT_EQ(OpenStorage(CTulStringW(text("missing"))), nullptr);
    WriteFile(at("plain"), "plain text");
    EXPECT_EQ(OpenStorage(CTulStringW(text("plain"))), nullptr);
    EXPECT_EQ(CreateStorage(CTulStringW(text("no/folder/s"))), nullptr);
    EXPECT_EQ(OpenStorage(nullptr), nullptr);

    // Cut off or spoilt at any place: an answer, whichever, and no harm.
    const std::string whole = ReadFile(makeStorage("s", std::string(5000, 'g')));
    for (std::size_t at = 0; at < whole.size(); at += 37) {
        std::string spoilt = whole;
        spoilt[at] = static_cast<char>(spoilt[at] ^ 0x5A);
        for (const std::string& bytes : {spoilt, whole.substr(0, at)}) {
            WriteFile(this->at("spoilt"), bytes);
            readStorage(text("spoilt"));
        }
    }
}

TEST_F(UserData, ModuleFillsAndTakesTheStream) {
    install();
    const auto package = newPackage();
    EXPECT_EQ(package->ExchangeStorage(text("s"), 0, 0), 0) << "nothing to open";
    ASSERT_NE(package->ExchangeStorage(text("s"), 0, 1), 0);
    EXPECT_EQ(readStorage(text("s")), "hello");
    EXPECT_EQ(log(), "open\nfill\nclose after 1\n");
    clearLog();
    makeStorage("s", "own words");
    ASSERT_NE(package->ExchangeStorage(text("s"), 1, 0), 0);
    EXPECT_EQ(log(), "open\ntake own words\nclose after 1\n");
    clearLog();
    ASSERT_NE(package->ExchangeStorage(text("t"), 1, 1), 0);
    EXPECT_EQ(readStorage(text("t")), "") << "an empty stream is made";
    EXPECT_EQ(log(), "");
    set("SAMPLE_MODULE_FAILS", "1");
    EXPECT_NE(package->ExchangeStorage(text("s"), 1, 0), 0) << "what the module answers isn't told";
}

TEST_F(UserData, SavesMakeTheMemberAndOpeningRenewsIt) {
    install();
    const std::string file = text("b.pptx");
    const std::string member = "Ab/Abgreeting.xml";
    auto package = opened(makePresentation());
    package->SetUseUserData(1);
    package->GetPart("/ppt/media/image1.png")->SetUserFlag(1);
    ASSERT_NE(package->Save(file), 0);
    const Members written = ReadPackage(file);
    EXPECT_TRUE(written.contains("ppt/media/Ab/Abimage1.png"));
    ASSERT_TRUE(written.contains(member));
    EXPECT_EQ(NamesInOrder(file).front(), member);
    WriteFile(at("data"), written.at(member));
    EXPECT_EQ(readStorage(text("data")), "hello");
    EXPECT_NE(written.at("[Content_Types].xml")
                  .find("\"/Ab/Abgreeting.xml\" ContentType=\"application/vnd.tul-userdata"),
              std::string::npos);

    clearLog();
    fs::permissions(file, fs::perms(0640));
    package = newPackage();
    package->SetUseUserData(1);
    ASSERT_NE(package->Open(file), 0);
    EXPECT_EQ(log(), "open\ntake hello\nclose after 1\n");
    EXPECT_EQ(NamesInOrder(file).back(), member) << "written anew, behind all others";
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    EXPECT_EQ(package->GetParts()->size(), 4U);
    package.reset();
    EXPECT_TRUE(temporaryEntries().empty());

    // From memory the member is only taken in.
    clearLog();
    std::string bytes = ReadFile(file);
    package = newPackage();
    package->SetUseUserData(1);
    ASSERT_NE(package->OpenMemory(bytes.data(), static_cast<unsigned>(bytes.size()), file), 0);
    EXPECT_EQ(log(), "open\ntake hello\nclose after 1\n");
}

TEST_F(UserData, ImportWithoutTheMemberMakesAnEmptyOne) {
    install();
    const auto package = newPackage();
    CSDUnZip unzip;
    ASSERT_NE(unzip.OpenZipFileNonDecompress(makePresentation()), 0);
    EXPECT_EQ(package->ImportUserData(package->GetUserDataPart(), &unzip), 1);
    EXPECT_EQ(readStorage(Utf8(package->GetUserDataPath())), "");
    EXPECT_EQ(package->ImportUserData(nullptr, &unzip), 0);
    EXPECT_EQ(package->ExportUserData(nullptr, 0), 0);
    CTulStringW out;
    EXPECT_EQ(package->RepackUserData(nullptr, &unzip, out), 0);
}

namespace {

enum class Form { File, Memory, LargeMemory };
constexpr Form kForms[] = {Form::File, Form::Memory, Form::LargeMemory};

class Conversion : public UserData {
protected:
    /// Converts the file "a.pptx"; the members of the result, empty on failure.
    Members convert(IPackage& package, Form form) {
        if (form == Form::File)
            return package.ConvertUserDataFile(text("a.pptx")) != 0 ? ReadPackage(text("a.pptx")) : Members{};
        std::string bytes = ReadFile(at("a.pptx"));
        const auto size = static_cast<unsigned>(bytes.size());
        ODF::MemoryMapping mapping = ODF::MemoryMapping::create(size);
        std::memcpy(mapping.map(), bytes.data(), size);
        MemoryArchive out;
        if ((form == Form::Memory ? package.ConvertUserDataMemory(bytes.data(), size, &out)
                                  : package.ConvertUserDataLargeMemory(mapping.handle(), size, &out)) == 0)
            return {};
        if (form == Form::LargeMemory) mapping.release(); // it is the package's now
        Members members = ReadMembers(*package.GetUnZip());
        package.SetUnZip(nullptr);
        EXPECT_GT(out.size, 0U);
        ReleaseMemoryArchive(out);
        EXPECT_EQ(out.mapping, nullptr);
        return members;
    }
};

} // namespace

TEST_F(Conversion, GivesThePackageTheUserForm) {
    install();
    for (const Form form : kForms) {
        for (const bool hasData : {false, true}) {
            clearLog();
            auto members = presentationMembers();
            if (hasData) members["ppt/UserData.dat"] = ReadFile(makeStorage("s", "kept words"));
            WritePackage(text("a.pptx"), members);
            const auto package = newPackage();
            Members converted = convert(*package, form);
            EXPECT_EQ(Names(converted),
                      (std::vector<std::string>{
                          "[Content_Types].xml", "_rels/.rels", "ppt/Abpresentation.xml", "ppt/UserData.dat",
                          "ppt/_rels/Abpresentation.xml.rels", "ppt/media/image1.png",
                          "ppt/slides/_rels/slide1.xml.rels", "ppt/slides/slide1.xml"}));
            EXPECT_EQ(converted["ppt/Abpresentation.xml"], "<presentation/>");
            EXPECT_NE(converted["_rels/.rels"].find("Target=\"ppt/Abpresentation.xml\""), std::string::npos);
            for (const std::string& type : {kUserMainType, kUserDataType})
                EXPECT_NE(converted["[Content_Types].xml"].find(type), std::string::npos);
            WriteFile(at("data"), converted["ppt/UserData.dat"]);
            EXPECT_EQ(readStorage(text("data")), hasData ? "kept words" : "");
            EXPECT_EQ(log(), hasData ? "open\ntake kept words\nclose after 1\n" : "");
            EXPECT_EQ(package->GetDocType(), SDDocType::DocTypePresentation);
        }
    }
}

TEST_F(Conversion, LeavesAPackageThatItCanNotConvert) {
    install();
    for (const auto& [name, data] :
         {std::pair{"_rels/.rels", "<broken"}, std::pair{"ppt/UserData.dat", "no storage"}}) {
        auto members = presentationMembers();
        members[name] = data;
        WritePackage(text("a.pptx"), members);
        const std::string before = ReadFile(at("a.pptx"));
        for (const Form form : kForms)
            EXPECT_TRUE(convert(*newPackage(), form).empty()) << name;
        EXPECT_EQ(ReadFile(at("a.pptx")), before) << name;
    }
}

#endif
