#include "decisions/Vectors.h"

#include <gtest/gtest.h>

#include <set>

namespace {

TEST(VectorsTest, ThereAreManyAndEachHasANameOfItsOwn) {
  std::set<std::string> names;
  std::size_t count = 0;
  for (const PermissionGroup& group : PermissionGroups()) {
    for (const PermissionQuestion& question : group.questions) {
      EXPECT_TRUE(names.insert(group.name + ": " + question.name).second) << group.name << ": " << question.name;
      ++count;
    }
  }
  EXPECT_GE(count, 150u);
  for (const FileQuestion& question : FileQuestions())
    EXPECT_TRUE(names.insert(question.name).second) << question.name;
  EXPECT_GE(FileQuestions().size(), 60u);
}

// A question without one of these would be answered by nobody.
TEST(VectorsTest, WhatIsPermittedIsPermittedByAnEntry) {
  for (const PermissionGroup& group : PermissionGroups()) {
    for (const PermissionQuestion& question : group.questions) {
      EXPECT_EQ(question.isPermitted && !question.isUnresolved, question.by.has_value())
          << group.name << ": " << question.name;
      EXPECT_FALSE(question.isPermitted && question.reason) << group.name << ": " << question.name;
    }
  }
}

TEST(VectorsTest, OnlyWhatIsMovedHasANewName) {
  for (const FileQuestion& question : FileQuestions())
    EXPECT_EQ(question.action == "move-aside", question.movedTo.has_value()) << question.name;
}

}  // namespace
