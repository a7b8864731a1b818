#include "tests/simulated/Files.h"
#include "xml/SimpleXMLElement.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using xml::SimpleXMLElement;

const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const wchar_t* const path = L"C:\\content\\tallyhive.xml";

class Files : public testing::Test
{
protected:
    void SetUp() override
    {
        simulated::disk.Reset();
        simulated::PutFolder(L"C:\\content");
    }

    static std::string ReadFile() { return simulated::ReadFileBytes(path).value_or("no file"); }
};

// Puts the key before the text, and takes it away again.
class CPrefix : public xml::IXmlTransformer
{
public:
    std::string Encode(const std::string& key, const std::string& text) override
    {
        return key + text;
    }
    std::string Decode(const std::string& key, const std::string& text) override
    {
        return text.substr(key.size());
    }
};

} // namespace

TEST(Writer, WritesTheDocument)
{
    SimpleXMLElement root("<r a=\"1\"><c>x</c></r>", false);
    root.SetAttribute("b", "<\"");
    root.GetChild(0)->AddChild(L"d", 5, false);
    EXPECT_EQ(root.ToString(""), declaration + "<r a = \"1\"  b = \"<\"\" >\n\t<c>\n\t\t<d>5</d>\n"
                                               "\t</c>\n</r>\n");
    EXPECT_EQ(root.GetChild(0)->ToString("  "), "  <c>\n  \t<d>5</d>\n  </c>\n");
}

TEST_F(Files, AreWrittenAndReadBackThroughATransformer)
{
    CPrefix prefix;
    SimpleXMLElement root;
    root.AddChild(L"e", 3, false);
    for (xml::IXmlTransformer* transformer : {static_cast<CPrefix*>(nullptr), &prefix})
    {
        ASSERT_TRUE(root.Save(path, transformer, "key"));
        EXPECT_EQ(ReadFile(), (transformer ? "key" : "") + declaration +
                                  "<SimpleXMLElement>\n\t<e>3</e>\n</SimpleXMLElement>\n");
        SimpleXMLElement loaded;
        ASSERT_TRUE(loaded.Load(path, transformer, "key"));
        EXPECT_EQ(loaded.ToString(""), root.ToString(""));
    }
}

TEST_F(Files, ThatCannotBeUsedChangeNothing)
{
    SimpleXMLElement root("<r>x</r>", false);
    EXPECT_FALSE(root.Load(path));
    EXPECT_FALSE(root.Save(L"C:\\nowhere\\tallyhive.xml"));
    simulated::PutFile(path, "old");
    simulated::SetReadOnly(path, true);
    EXPECT_FALSE(root.Save(path));
    EXPECT_EQ(ReadFile(), "old");
    EXPECT_EQ(root.ToString(""), declaration + "<r>x</r>\n");
}

TEST_F(Files, AddToWhatTheElementHolds)
{
    const struct
    {
        const char *what, *file, *expected;
    } cases[] = {
        {"no root", "text</x>", "< o = \"1\" >\n\t<c>1</c>\n</>\n"},
        {"another root", "<s p=\"2\"><d>2</d></s>",
         "<s o = \"1\"  p = \"2\" >\n\t<c>1</c>\n\t<d>2</d>\n</s>\n"},
    };
    for (const auto& c : cases)
    {
        simulated::PutFile(path, c.file);
        SimpleXMLElement root("<r o=\"1\"><c>1</c></r>", false);
        EXPECT_TRUE(root.Load(path)) << c.what;
        EXPECT_EQ(root.ToString(""), declaration + c.expected) << c.what;
    }
}
