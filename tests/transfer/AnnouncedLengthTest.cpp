// What comes is compared with what the server announced, in 64 bit, and only where a length was announced for the bytes as
// they come.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include <string>
#include <vector>

#include "support/Files.h"
#include "support/HResult.h"
#include "support/LogCapture.h"
#include "transfer/ScriptedInternet.h"
#include "transfer/Transfer.h"

namespace {

using Texts = std::vector<std::string>;

constexpr char kURL[] = "http://host/a.bin";
constexpr HRESULT kAborted = static_cast<HRESULT>(0x80072EFE);

class AnnouncedLengthTest : public testing::Test {
 protected:
  HRESULT Fetch() {
    const std::string destination = folder.File("copy.bin");
    return FetchURL(kURL, destination.c_str(), FILE_ATTRIBUTE_NORMAL, nullptr, 0, nullptr);
  }

  const TemporaryFolder folder;
  const LogCapture log;
};

struct LengthRow {
  const char* name;
  const char* length;
  HRESULT result;
};

class TenByteBodyTest : public AnnouncedLengthTest, public testing::WithParamInterface<LengthRow> {};

TEST_P(TenByteBodyTest, IsComparedWithTheLength) {
  ScriptedInternet internet({"01234", "56789"});
  internet.Announce(HTTP_QUERY_CONTENT_LENGTH, GetParam().length);
  EXPECT_HRESULT(GetParam().result, Fetch());
  const bool isGood = GetParam().result == S_OK;
  EXPECT_EQ(isGood ? Texts{} : Texts{"ERROR 0x80072efe Reading 'http://host/a.bin' failed."}, log.Messages());
  EXPECT_EQ(isGood ? "copy.bin" : "", NamesIn(folder.Path()));
  EXPECT_TRUE(internet.IsClosed());
}

INSTANTIATE_TEST_SUITE_P(
    , TenByteBodyTest,
    testing::Values(
        LengthRow{"Equal", "10", S_OK}, LengthRow{"LeadingZeros", "0000000010", S_OK},
        LengthRow{"OneTooMany", "11", kAborted}, LengthRow{"OneTooFew", "9", kAborted}, LengthRow{"Zero", "0", kAborted},
        LengthRow{"ALowHalfThatIsEqual", "4294967306", kAborted},
        LengthRow{"TheLargestNumber", "18446744073709551615", kAborted},
        LengthRow{"BeyondTheLargestNumber", "18446744073709551616", S_OK},
        LengthRow{"ALowPartThatWouldBeEqual", "18446744073709551626", S_OK}, LengthRow{"Negative", "-11", S_OK},
        LengthRow{"NoNumber", "10 bytes", S_OK}, LengthRow{"Empty", "", S_OK},
        LengthRow{"LongerThanAnyNumber", "00000000000000000000000000000000000000000000000000000000000000000000011", S_OK}),
    [](const testing::TestParamInfo<LengthRow>& row) { return std::string(row.param.name); });

// No byte behind the announced ones is written, and nothing more is read.
TEST_F(AnnouncedLengthTest, ABodyThatIsTooLongEndsWithTheReadThatShowsIt) {
  ScriptedInternet internet({"01234", "56789", "and more"});
  internet.Announce(HTTP_QUERY_CONTENT_LENGTH, "7");
  EXPECT_HRESULT(kAborted, Fetch());
  EXPECT_EQ(2, internet.Reads());
}

TEST_F(AnnouncedLengthTest, TheLengthOfABodyInChunksDoesNotCount) {
  ScriptedInternet internet({"01234"});
  internet.Announce(HTTP_QUERY_CONTENT_LENGTH, "7");
  internet.Announce(HTTP_QUERY_TRANSFER_ENCODING, "chunked");
  EXPECT_HRESULT(S_OK, Fetch());
}

TEST_F(AnnouncedLengthTest, TheLengthOfAnEncodedBodyDoesNotCount) {
  ScriptedInternet internet({"01234"});
  internet.Announce(HTTP_QUERY_CONTENT_LENGTH, "7");
  internet.Announce(HTTP_QUERY_CONTENT_ENCODING, std::string(200, 'z'));
  EXPECT_HRESULT(S_OK, Fetch());
}

}  // namespace
