#include "Process/Sha256.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace controller {
namespace {

std::string digestOf(std::string_view text) {
  Sha256 digest;
  digest.add(std::as_bytes(std::span(text)));
  return digest.finish();
}

TEST(Sha256Test, HasThePublishedDigests) {
  // The examples of FIPS 180-2, appendix B, and the digest of nothing.
  EXPECT_EQ(digestOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(digestOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(digestOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(digestOf(std::string(1'000'000, 'a')), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256Test, PiecesMakeTheSameDigestAsTheWhole) {
  const std::string text(300, 'x');
  for (std::size_t cut = 0; cut <= text.size(); ++cut) {
    Sha256 digest;
    digest.add(std::as_bytes(std::span(text).first(cut)));
    digest.add(std::as_bytes(std::span(text).subspan(cut)));
    EXPECT_EQ(digest.finish(), digestOf(text)) << cut;
  }
}

}  // namespace
}  // namespace controller
