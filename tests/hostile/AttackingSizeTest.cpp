// Documents that are large: they are done or refused within the time that their size explains.

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <sstream>

#include "hostile/HostileFixture.h"
#include "support/Turns.h"

namespace {

double Seconds(const FILETIME& time) {
  return static_cast<double>(ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime) / 1e7;
}

// The processor's time that this thread has had, which does not depend on what else the machine does.
double SecondsOfThisThread() {
  FILETIME creation, exit, kernel, user;
  EXPECT_TRUE(GetThreadTimes(GetCurrentThread(), &creation, &exit, &kernel, &user));
  return Seconds(kernel) + Seconds(user);
}

// The seconds for little and for ten times as much.
struct Costs {
  double few, many;
};

// Ten times as much costs at the most so many times as much in one of a few rounds: what else the machine does makes some of
// them dear (its caches are everybody's), a cost that grows faster makes all of them so. Gives the number of rounds it took.
template <class Measure>
int ExpectTimesAsMuch(double most, Measure measure) {
  constexpr int kRounds = 4;
  std::ostringstream seen;
  for (int round = 1; round <= kRounds; ++round) {
    const Costs costs = measure();
    if (costs.few > 0 && costs.many / costs.few < most)
      return round;
    seen << ' ' << costs.few << " and " << costs.many << " seconds;";
  }
  ADD_FAILURE() << "more than " << most << " times as much:" << seen.str();
  return kRounds;
}

std::string Repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i)
    all += text;
  return all;
}

class AttackingSizeTest : public HostileTest {
 protected:
  // The time of a run of that many commands, each of which finds its file in place.
  double SecondsOfCommands(int count) {
    const std::string manifest = ManifestOf(Repeated(CopyOf("a.txt", "<IfFileExists><Skip/></IfFileExists>"), count));
    const double start = SecondsOfThisThread();
    EXPECT_HRESULT(S_OK, RunLocal(manifest));
    return SecondsOfThisThread() - start;
  }

  // The time to read that many permitted URLs and to look up the last one.
  double SecondsOfURLs(int count) {
    const std::string others = Repeated("<URL>http://nobody.test/apps/</URL>", count);
    installed.WritePermit(documents.Path() + "\\</URL>" + others + "<URL>" + server.Url("/"), destination.Path());
    const double start = SecondsOfThisThread();
    control = module.CreateControl();
    EXPECT_HRESULT(S_OK, RunAnswered(Response().Body(ManifestOf(""))));
    return SecondsOfThisThread() - start;
  }

  // Runs one command after a replacement in it; its result is that of the run, and the next command is carried out.
  void ExpectFailedCommand(const std::string& from, const std::string& to) {
    EXPECT_HRESULT(S_FALSE, RunLocal(ManifestOf(Replaced(CopyOf("a.txt"), from, to) + Copy("b.txt"))));
    EXPECT_EQ(kCommandFailed, Told().back());
    EXPECT_EQ("b.txt", Written("b.txt"));
    EXPECT_EQ(std::nullopt, Written("a.txt"));
  }

  const std::string megabytes = std::string(2000000, 'm');
};

TEST_F(AttackingSizeTest, FortyThousandCommandsCostWhatFourThousandExplain) {
  const int few = WholeInOneWidth(4000, 400);
  WriteWholeFile(destination.File("a.txt"), "old");
  ExpectTimesAsMuch(13, [&] {
    const double seconds = SecondsOfCommands(few);
    return Costs{seconds, SecondsOfCommands(10 * few)};
  });
  EXPECT_EQ("old", Written("a.txt"));
  EXPECT_EQ(Lines{}, server.Asked());
}

TEST_F(AttackingSizeTest, AHundredThousandPermittedURLsCostWhatTenThousandExplain) {
  constexpr int kTimes = 5;  // the clock is a coarse one
  const int rounds = ExpectTimesAsMuch(20, [&] {
    double few = 0;
    for (int i = 0; i < kTimes; ++i)
      few += SecondsOfURLs(10000) / kTimes;
    return Costs{few, SecondsOfURLs(100000)};
  });
  EXPECT_EQ(Lines(rounds * (kTimes + 1), "GET /control-run.xml"), server.Asked());
}

TEST_F(AttackingSizeTest, ASourceOfMegabytesIsAFailedCommand) {
  ExpectFailedCommand("/a.txt", "/" + megabytes + ".txt");
  EXPECT_EQ("b.txt", NamesIn(destination.Path()));
}

TEST_F(AttackingSizeTest, ASourceHostOfMegabytesIsNotPermitted) {
  ExpectFailedCommand("http://", "http://" + megabytes);
  EXPECT_EQ(Lines{"GET /b.txt"}, server.Asked());
}

TEST_F(AttackingSizeTest, AFolderOfMegabytesIsNotPermitted) {
  ExpectFailedCommand("<Path>", "<Path>C:\\" + megabytes);
  EXPECT_EQ(Lines{"GET /b.txt"}, server.Asked());
}

TEST_F(AttackingSizeTest, ANotFoundTextOfMegabytesIsNeverFound) {
  server.Answer("/a.txt", Response().Body("a"));
  EXPECT_HRESULT(S_OK, RunLocal(ManifestOf(CopyOf("a.txt", "", "<NotFoundHTML>" + megabytes + "</NotFoundHTML>"))));
  EXPECT_EQ(Lines{"INFO Read in too few bytes to check for 'not found'."}, Told());
  EXPECT_EQ("a", Written("a.txt"));
}

}  // namespace
