#include "engine/Command.h"

#include <gtest/gtest.h>

#include "engine/CopyCommand.h"
#include "engine/EngineFixture.h"
#include "engine/OpenCommand.h"
#include "support/HeapBalance.h"
#include "support/LogCapture.h"

namespace {

TEST(CommandTest, ACommandMatchesNothingButItself) {
  const CCopyCommand commands[2] = {{nullptr, nullptr}, {nullptr, nullptr}};
  EXPECT_EQ(0, commands[0].Compare(&commands[0]));
  EXPECT_EQ(0, commands[1].Compare(&commands[1]));
  EXPECT_EQ(-1, commands[0].Compare(&commands[1]));
  EXPECT_EQ(1, commands[1].Compare(&commands[0]));
  EXPECT_EQ(1, commands[0].Compare(nullptr));
}

TEST(CommandTest, EqualContentIsNoMatch) {
  const CopyFixture fixture;
  const auto element = ParseElement(CopyElement(fixture.Source("a.txt"), fixture.PathElement()));
  const CCopyCommand first(element.Get(), nullptr);
  const CCopyCommand second(element.Get(), nullptr);
  EXPECT_NE(0, first.Compare(&second));
  EXPECT_EQ(-first.Compare(&second), second.Compare(&first));
}

struct NameRow {
  const char* name;
  const char* asked;
  bool isKind;
};

class CommandNameTest : public testing::TestWithParam<NameRow> {};

TEST_P(CommandNameTest, IsAnsweredAlikeByEveryCommand) {
  EXPECT_EQ(GetParam().isKind, CCopyCommand(nullptr, nullptr).IsKindOf(GetParam().asked));
  EXPECT_EQ(GetParam().isKind, COpenCommand(nullptr, nullptr).IsKindOf(GetParam().asked));
}

INSTANTIATE_TEST_SUITE_P(
    , CommandNameTest,
    testing::Values(NameRow{"Command", "CCommand", true}, NameRow{"Null", nullptr, false}, NameRow{"Empty", "", false},
                    NameRow{"OtherCase", "ccommand", false}, NameRow{"Longer", "CCommandX", false},
                    NameRow{"Shorter", "CComman", false}, NameRow{"CopyCommand", "CCopyCommand", false},
                    NameRow{"OpenCommand", "COpenCommand", false}, NameRow{"ListItem", "CListItem", false}),
    [](const auto& row) { return row.param.name; });

TEST(CommandTest, EveryCommandDumpsTheNameOfItsType) {
  const CCopyCommand copy(nullptr, nullptr);
  const COpenCommand open(nullptr, nullptr);
  {
    const LogCapture log(false);
    copy.Dump();
    EXPECT_EQ("CopyCommand", log.Text());
  }
  const LogCapture log(false);
  open.Dump();
  EXPECT_EQ("OpenCommand", log.Text());
}

TEST(CommandTest, DeletingTheFirstCommandDeletesTheChain) {
  const auto element = ParseElement(CopyElement("C:\\a.txt", "<Temp/>"));
  const HeapBalance heap;
  {
    CCopyCommand first(element.Get(), nullptr);
    first.Append(std::make_unique<CCopyCommand>(element.Get(), nullptr));
    first.Append(std::make_unique<COpenCommand>(element.Get(), nullptr));
    EXPECT_LT(10, heap.Outstanding());
  }
  EXPECT_EQ(0, heap.Outstanding());
}

}  // namespace
