#include "tests/simulated/Files.h"
#include "xml/SimpleXMLElement.h"

#include <gtest/gtest.h>

#include <random>
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
        simulated::ResetFiles();
        simulated::PutFolder(L"C:\\content");
    }
    void TearDown() override { simulated::ResetFiles(); }

    static void PutFile(const std::string& bytes) { simulated::PutFile(path, bytes); }
    static std::string ReadFile() { return simulated::ReadFileBytes(path).value_or("no file"); }
};

// Shifts each byte by the length of the key.
class CShift : public xml::IXmlTransformer
{
public:
    std::string Encode(const std::string& key, const std::string& text) override
    {
        return Shift(text, static_cast<char>(key.size()));
    }
    std::string Decode(const std::string& key, const std::string& text) override
    {
        return Shift(text, static_cast<char>(-static_cast<int>(key.size())));
    }

private:
    static std::string Shift(std::string text, char by)
    {
        for (char& byte : text)
            byte = static_cast<char>(byte + by);
        return text;
    }
};

std::string RandomWord(std::mt19937& random)
{
    const std::string letters = "abcAB01_\xC3\xA9.-;&";
    std::string word;
    for (std::size_t length = random() % 6; length > 0; --length)
        word += letters[random() % letters.size()];
    return word;
}

void Grow(SimpleXMLElement& element, std::mt19937& random, int depth)
{
    for (std::size_t count = random() % 3; count > 0; --count)
        element.SetAttribute("a" + RandomWord(random), RandomWord(random));
    for (std::size_t count = depth > 0 ? random() % 4 : 0; count > 0; --count)
    {
        // An attribute on a child of its parent's own name would end the parent early.
        const std::wstring name = {L'n', static_cast<wchar_t>(L'a' + depth),
                                   static_cast<wchar_t>(L'a' + random() % 3)};
        SimpleXMLElement* child = element.AddChild(name, 0, false);
        child->SetValue(RandomWord(random) + "\n" + RandomWord(random));
        Grow(*child, random, depth - 1);
    }
}

} // namespace

TEST(Writer, WritesTheDocument)
{
    SimpleXMLElement root("<r a=\"1\"><c>x</c></r>", false);
    EXPECT_EQ(root.ToString(""), declaration + "<r a = \"1\" >\n\t<c>x</c>\n</r>\n");
    root.SetAttribute("b", "<\"");
    root.GetChild(0)->AddChild(L"d", 5, false);
    EXPECT_EQ(root.ToString(""), declaration + "<r a = \"1\"  b = \"<\"\" >\n\t<c>\n\t\t<d>5</d>\n"
                                               "\t</c>\n</r>\n");
    EXPECT_EQ(root.GetChild(0)->ToString("  "), "  <c>\n  \t<d>5</d>\n  </c>\n");
    EXPECT_EQ(SimpleXMLElement().ToString(""),
              declaration + "<SimpleXMLElement></SimpleXMLElement>\n");
}

TEST(Writer, WritesWhatTheParserReadsBack)
{
    std::mt19937 random(7121);
    for (int round = 0; round < 2000; ++round)
    {
        SimpleXMLElement root;
        Grow(root, random, 4);
        const std::string text = root.ToString("");
        EXPECT_EQ(SimpleXMLElement(text, false).ToString(""), text);
    }
}

TEST_F(Files, AreWrittenAndReadBack)
{
    SimpleXMLElement root;
    root.AddChild(L"e", 3, false);
    ASSERT_TRUE(root.Save(path));
    EXPECT_EQ(ReadFile(), declaration + "<SimpleXMLElement>\n\t<e>3</e>\n</SimpleXMLElement>\n");

    SimpleXMLElement loaded;
    ASSERT_TRUE(loaded.Load(path));
    EXPECT_EQ(loaded.ToString(""), ReadFile());
    EXPECT_EQ(loaded.FindChild(L"E")->GetValueAsInteger(), 3);
}

TEST_F(Files, PassThroughTheTransformer)
{
    CShift shift;
    SimpleXMLElement root;
    root.AddChild(L"e", 3, false);
    ASSERT_TRUE(root.Save(path, &shift, "k"));
    EXPECT_EQ(ReadFile().substr(0, 6), "=@ynm!");

    SimpleXMLElement loaded;
    ASSERT_TRUE(loaded.Load(path, &shift, "k"));
    EXPECT_EQ(loaded.ToString(""), root.ToString(""));
}

TEST_F(Files, ThatCannotBeUsedChangeNothing)
{
    SimpleXMLElement root("<r>x</r>", false);
    EXPECT_FALSE(root.Load(path));
    EXPECT_FALSE(root.Save(L"C:\\nowhere\\tallyhive.xml"));
    PutFile("old");
    simulated::SetReadOnly(path, true);
    EXPECT_FALSE(root.Save(path));
    EXPECT_EQ(ReadFile(), "old");
    EXPECT_EQ(root.ToString(""), declaration + "<r>x</r>\n");
}

TEST_F(Files, AddToWhatTheElementHolds)
{
    const struct
    {
        const char* what;
        const char* file;
        const char* expected;
    } cases[] = {
        {"empty", "", "<r o = \"1\" >\n\t<c>1</c>\n</r>\n"},
        {"no tag", "text", "<r o = \"1\" >\n\t<c>1</c>\n</r>\n"},
        {"no root", "text</x>", "< o = \"1\" >\n\t<c>1</c>\n</>\n"},
        {"another root", "<s p=\"2\"><d>2</d></s>",
         "<s o = \"1\"  p = \"2\" >\n\t<c>1</c>\n\t<d>2</d>\n</s>\n"},
    };
    for (const auto& c : cases)
    {
        PutFile(c.file);
        SimpleXMLElement root("<r o=\"1\"><c>1</c></r>", false);
        EXPECT_TRUE(root.Load(path)) << c.what;
        EXPECT_EQ(root.ToString(""), declaration + c.expected) << c.what;
    }
}
