#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// The example in the documents is cut from the sources of models/queue, and must stay the same text.

namespace {

const std::filesystem::path kTop = QUORVA_TOP;

std::string contents(const std::filesystem::path& file) {
  std::ifstream stream(file);
  EXPECT_TRUE(stream.is_open()) << file;
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// The blocks of a Markdown text that are marked as being in `language`.
std::vector<std::string> codeBlocks(const std::string& text, const std::string& language) {
  const std::string opening = "\n```" + language + "\n";
  std::vector<std::string> blocks;
  for (std::size_t at = text.find(opening); at != std::string::npos; at = text.find(opening, at)) {
    at += opening.size();
    const std::size_t end = text.find("\n```\n", at);
    blocks.push_back(text.substr(at, end + 1 - at));
    at = end;
  }
  return blocks;
}

TEST(DocumentsTest, EveryCodeBlockOfTheExampleStandsInItsSources) {
  std::string sources;
  for (const auto& entry : std::filesystem::directory_iterator(kTop / "models" / "queue")) {
    sources += contents(entry.path());
  }
  const std::string document = contents(kTop / "docs" / "writing-a-model.md");
  const std::vector<std::string> blocks = codeBlocks(document, "cpp");
  EXPECT_GE(blocks.size(), 4U);
  for (const std::string& block : blocks) {
    EXPECT_NE(sources.find(block), std::string::npos) << "in no file of models/queue:\n" << block;
  }
}

}  // namespace
