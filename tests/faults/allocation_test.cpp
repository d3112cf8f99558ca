// Memory that runs out once, at each allocation in turn: what comes out is whole or told, and nothing is
// lost.

#include "faults/failing_allocations.h"
#include "support/packages.h"
#include "support/trees.h"
#include "support/workspace.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/odfmodel.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <new>

using namespace ODF;

namespace {

using Bytes = std::vector<unsigned char>;

/// Foreign content of every kind, values that share memory, and texts of both sizes.
std::string Content() {
    std::string content =
        test::TextContent("<!-- inside --><?two inside?>"
                          "<text:p text:style-name='A' x:kept='1' xmlns:x='urn:x'>a text<x:more x:y='z'>with "
                          "<text:span>a span</text:span></x:more> behind</text:p>"
                          "<text:list text:style-name='A'>stray text<text:list-item>"
                          "<text:h text:outline-level='007'>words</text:h></text:list-item></text:list>");
    content.insert(content.find("<office:document-content"), "<!-- before --><?one before?>");
    content.insert(content.find("</office:text>"), "<text:p>" + std::string(100'000, 'x') + "</text:p>");
    return content;
}

/// The same as a flat file, which no archive is needed for.
std::string FlatContent() {
    std::string content = Content();
    for (const std::string_view name : {"<office:document-content", "</office:document-content"})
        content.replace(content.find(name), name.size(), name.substr(0, name.size() - 8));
    content.insert(content.find("<office:body>"),
                   "<office:meta><dc:date xmlns:dc='http://purl.org/dc/elements/1.1/'>"
                   "2009-01-31T12:30:15</dc:date></office:meta>");
    return content;
}

enum class Leaks { None, Unknown };

/// Calls `attempt(n)` with each n from 0 on, which lets the n-th allocation fail, until there are no more.
void ForEachAllocation(long step, Leaks leaks, const std::function<void(long)>& attempt) {
    if (std::getenv("ODFMODEL_ALL_ALLOCATIONS")) step = 1;
    long count = 0;
    do {
        const long before = test::OutstandingAllocations();
        attempt(count);
        const bool hasFailed = test::FailingAllocations::hasFailed();
        if (leaks == Leaks::None) {
            EXPECT_EQ(test::OutstandingAllocations(), before) << "something is lost, at " << count;
        }
        if (!hasFailed) break;
        count += step;
    } while (!testing::Test::HasFailure());
    EXPECT_GT(count, step) << "nothing was tried";
}

Bytes ToBytes(std::string_view text) {
    return {text.begin(), text.end()};
}

class Allocations : public test::InWorkspace<> {
protected:
    void SetUp() override {
        if (!test::CanFailAllocations()) GTEST_SKIP() << "the sanitizer has an allocator of its own";
        test::WriteOdf(file("source.odt"), test::kTextType, {{"content.xml", Content()}});
    }

    /// What a document of these bytes writes that nothing fails in.
    static Bytes written(const Bytes& source) {
        Document document;
        EXPECT_TRUE(document.Open(source));
        return saved(document);
    }
    static Bytes saved(Document& document, Status* status = nullptr) {
        Bytes bytes;
        SaveOptions options;
        options.fixedTime = 1'000'000'000;
        const Result result = document.Save(bytes, options);
        if (status) *status = result.Code();
        EXPECT_EQ(bytes.empty(), !result);
        return bytes;
    }
    test::Members membersOf(const Bytes& bytes) {
        if (bytes.empty()) return {};
        test::WriteFile(file("saved.odt"), {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        return test::ReadPackage(file("saved.odt"));
    }
};

} // namespace

TEST_F(Allocations, OfAnOpen) {
    const Bytes source = ToBytes(FlatContent());
    const Bytes expected = written(source);
    ForEachAllocation(1, Leaks::None, [&](long count) {
        Document document;
        Status status = Status::None;
        {
            const test::FailingAllocations failing(count);
            status = document.Open(source).Code();
        }
        EXPECT_TRUE(status == Status::Ok || status == Status::OutOfMemory) << ToText(status);
        Status ofSave = Status::None;
        const Bytes bytes = saved(document, &ofSave);
        EXPECT_EQ(ofSave, status == Status::Ok ? Status::Ok : Status::NothingToSave) << count;
        EXPECT_TRUE(bytes.empty() || bytes == expected) << "another tree at allocation " << count;
    });
}

TEST_F(Allocations, OfASave) {
    Document document;
    ASSERT_TRUE(document.Open(ToBytes(FlatContent())));
    const Bytes expected = saved(document);
    ForEachAllocation(1, Leaks::None, [&](long count) {
        Bytes bytes;
        Status status = Status::None;
        {
            const test::FailingAllocations failing(count);
            bytes = saved(document, &status);
        }
        EXPECT_TRUE(status == Status::Ok ? bytes == expected : status == Status::OutOfMemory) << count;
        EXPECT_EQ(saved(document), expected) << "the tree was changed at allocation " << count;
    });
}

TEST_F(Allocations, OfAPackage) {
    const Bytes source = ToBytes(test::ReadFile(file("source.odt")));
    const test::Members expected = membersOf(written(source));
    ASSERT_TRUE(expected.contains("content.xml"));
    ForEachAllocation(1, Leaks::Unknown, [&](long count) {
        Document document;
        Bytes bytes;
        Status opened = Status::None;
        {
            const test::FailingAllocations failing(count);
            opened = document.Open(source).Code();
            bytes = saved(document);
        }
        EXPECT_TRUE(bytes.empty() || membersOf(bytes) == expected) << "other content at allocation " << count;
        EXPECT_TRUE(opened != Status::Ok || membersOf(saved(document)) == expected) << count;
    });
}

TEST_F(Allocations, OfAPlainDocumentsOpen) {
    CODFDoc whole;
    ASSERT_EQ(whole.Open(file("source.odt")), 1);
    ForEachAllocation(7, Leaks::Unknown, [&](long count) {
        CODFDoc document;
        const CTulStringW path(file("source.odt"));
        int result = 0;
        try {
            const test::FailingAllocations failing(count);
            result = document.Open(path);
        } catch (const std::bad_alloc&) {
            return;
        }
        if (result == 1 && document.GetDiagnostics().status() == Status::Ok) {
            EXPECT_EQ(test::Difference(whole, document), "") << count;
        }
    });
    // What the package layer leaves of an open that fails is not looked at here.
    for (const std::string& entry : temporaryEntries())
        std::filesystem::remove_all(std::filesystem::temp_directory_path() / entry);
}

TEST_F(Allocations, OfAReadTree) {
    // More than a few objects, so that they come from the blocks that a parse fills.
    std::string body;
    for (int i = 0; i < 400; ++i)
        body += "<text:p text:style-name='S" + std::to_string(i) + "' x" + std::to_string(i) +
                "='1'>text</text:p>";
    const std::string xml = test::TextContent(body);
    for (const Fidelity fidelity : {Fidelity::Listed, Fidelity::Everything}) {
        const std::unique_ptr<CSDObject> whole(ClassOfElement("office:document-content")->create());
        ASSERT_TRUE(FromXml(xml, *whole, fidelity));
        const std::string expected = ToXml(*whole, {}, fidelity);
        ForEachAllocation(13, Leaks::None, [&](long count) {
            const std::unique_ptr<CSDObject> root(ClassOfElement("office:document-content")->create());
            {
                const test::FailingAllocations failing(count);
                try {
                    EXPECT_TRUE(FromXml(xml, *root, fidelity));
                } catch (const std::bad_alloc&) {
                    return;
                }
            }
            EXPECT_EQ(ToXml(*root, {}, fidelity), expected) << count;
        });
    }
}

TEST_F(Allocations, OfAChange) {
    const CTulStringW value(u"a value, of some length");
    const std::function<void(CTextP&)> changes[] = {
        [&](CTextP& paragraph) { paragraph.SetTextStyleName(value); },
        [](CTextP& paragraph) { paragraph.SetText(u"more text"); },
        [](CTextP& paragraph) { paragraph.SetTextSpan(); },
        [](CTextP& paragraph) { paragraph.CreateObject(ToUnits(u"text:span"), 1); },
        [](CTextP& paragraph) { paragraph.ReadNodeValue(ToUnits(u"text"), 4); },
        [](CTextP& paragraph) { SetForeignAttribute(paragraph, "urn:x", "x:kept", "another"); },
        [](CTextP& paragraph) { SetAttributeText(paragraph, "text:style-name", "a style, of some length"); },
        [](CTextP& paragraph) { SetAttributeText(paragraph, "text:cond-style-name", "another one"); },
        [](CTextP& paragraph) { // whose number is kept in the file's own words
            SetAttributeText(*paragraph.GetObjectByID(CTextSpan::kId), "text:style-name", "x");
        },
    };
    for (std::size_t i = 0; i < std::size(changes); ++i) {
        long failures = 0;
        for (const char* const start :
             {"<text:p xmlns:text='urn:oasis:names:tc:opendocument:xmlns:text:1.0'>"
              "<text:span>s</text:span></text:p>",
              "<text:p xmlns:text='urn:oasis:names:tc:opendocument:xmlns:text:1.0' "
              "text:style-name='A' text:id='b' k='l'><text:span>s</text:span>t</text:p>"}) {
            long most = 0;
            for (bool isDone = false; !isDone; ++most) {
                SCOPED_TRACE("change " + std::to_string(i) + ", allocation " + std::to_string(most));
                const long outstanding = test::OutstandingAllocations();
                {
                    const std::unique_ptr<CSDObject> object(ClassOfElement("text:p")->create());
                    auto& paragraph = static_cast<CTextP&>(*object);
                    ASSERT_TRUE(FromXml(start, paragraph, Fidelity::Everything));
                    const std::string before = ToXml(paragraph, {}, Fidelity::Everything);
                    try {
                        const test::FailingAllocations failing(most);
                        changes[i](paragraph);
                        isDone = !test::FailingAllocations::hasFailed();
                    } catch (const std::bad_alloc&) {
                        ++failures;
                        EXPECT_EQ(ToXml(paragraph, {}, Fidelity::Everything), before);
                    }
                    if (isDone) {
                        EXPECT_NE(ToXml(paragraph, {}, Fidelity::Everything), before);
                    }
                }
                EXPECT_EQ(test::OutstandingAllocations(), outstanding);
                ASSERT_LT(most, 1000);
            }
        }
        EXPECT_GT(failures, 0) << "change " << i << " takes memory";
    }
}

TEST_F(Allocations, OfATreeThatGoes) {
    const auto deep = [] {
        std::unique_ptr<CSDObject> root(ClassOfElement("text:section")->create());
        CSDObject* at = root.get();
        at->InitMap(true);
        for (int i = 0; i < 50'000; ++i) {
            at->CreateObject(ToUnits(u"text:p"), 1);
            CSDObject* const section = at->CreateObject(ToUnits(u"text:section"), 1);
            at->CreateObject(ToUnits(u"text:h"), 1);
            at = section;
            at->InitMap(true);
        }
        return root;
    };
    for (const long count : {0L, 5L}) {
        const long before = test::OutstandingAllocations();
        std::unique_ptr<CSDObject> root = deep();
        ASSERT_GT(test::OutstandingAllocations(), before + 150'000);
        {
            const test::FailingAllocations failing(count, true);
            root.reset();
        }
        EXPECT_EQ(test::OutstandingAllocations(), before) << count;
    }
}
