#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// What docs/engine.md shows of a model by hand is cut from a program of the tests, and must stay the same text. The
// modelling page has a test of its own, test_modelling_page.py.

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

TEST(DocumentsTest, EveryCodeBlockOfTheEnginePageStandsInTheQueueByHand) {
  const std::string source = contents(kTop / "tests" / "Modelling" / "programs" / "QueueByHand.cpp");
  const std::vector<std::string> blocks = codeBlocks(contents(kTop / "docs" / "engine.md"), "cpp");
  EXPECT_GE(blocks.size(), 4U);
  for (const std::string& block : blocks) {
    EXPECT_NE(source.find(block), std::string::npos) << "not in QueueByHand.cpp:\n" << block;
  }
}

}  // namespace
