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
    Files()
    {
        simulated::disk.Reset();
        simulated::PutFolder(L"C:\\content");
    }
};

// Puts the key before the text, and takes it away again.
struct CPrefix : xml::IXmlTransformer
{
    std::string Encode(const std::string& key, const std::string& text) override
    {
        return key + text;
    }
    std::string Decode(const std::string& key, const std::string& text) override
    {
        return text.substr(key.size());
    }
};

TEST_F(Files, AreWrittenAndReadBackThroughATransformer)
{
    SimpleXMLElement root("<r a=\"1\"><c>x</c></r>", false);
    root.SetAttribute("b", "<");
    root.GetChild(0)->AddChild(L"d", 5, false);
    EXPECT_EQ(root.GetChild(0)->ToString("  "), "  <c>\n  \t<d>5</d>\n  </c>\n");
    CPrefix prefix;
    for (xml::IXmlTransformer* transformer : {static_cast<CPrefix*>(nullptr), &prefix})
    {
        ASSERT_TRUE(root.Save(path, transformer, "key"));
        EXPECT_EQ(simulated::ReadFileBytes(path),
                  (transformer ? "key" : "") + declaration +
                      "<r a = \"1\"  b = \"<\" >\n\t<c>\n\t\t<d>5</d>\n\t</c>\n</r>\n");
    }
    SimpleXMLElement loaded;
    ASSERT_TRUE(loaded.Load(path, &prefix, "key"));
    EXPECT_EQ(loaded.ToString(""), root.ToString(""));
}

TEST_F(Files, ThatCannotBeUsedChangeNothing)
{
    SimpleXMLElement root("<r>x</r>", false);
    EXPECT_FALSE(root.Load(path));
    EXPECT_FALSE(root.Save(L"C:\\nowhere\\tallyhive.xml"));
    simulated::PutFile(path, "old");
    simulated::SetReadOnly(path, true);
    EXPECT_FALSE(root.Save(path));
    EXPECT_EQ(simulated::ReadFileBytes(path), "old");
    EXPECT_EQ(root.ToString(""), declaration + "<r>x</r>\n");
}

TEST_F(Files, AddToWhatTheElementHolds)
{
    const std::pair<const char*, const char*> cases[] = {
        {"no root</x>", "< o = \"1\" >\n\t<c>1</c>\n</>\n"},
        {"<s p=\"2\"><d>2</d></s>", "<s o = \"1\"  p = \"2\" >\n\t<c>1</c>\n\t<d>2</d>\n</s>\n"},
    };
    for (const auto& [file, expected] : cases)
    {
        simulated::PutFile(path, file);
        SimpleXMLElement root("<r o=\"1\"><c>1</c></r>", false);
        EXPECT_TRUE(root.Load(path)) << file;
        EXPECT_EQ(root.ToString(""), declaration + expected) << file;
    }
}

} // namespace
