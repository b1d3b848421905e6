#include <gtest/gtest.h>

#include "advice/Document.h"
#include "advice/Explanation.h"
#include "advice/Rehearsal.h"
#include "advice/Words.h"
#include "decisions/Vectors.h"
#include "engine/FileDecision.h"
#include "support/LogCapture.h"

// The libraries are asked.

namespace {

Question QuestionOf(const PermissionQuestion& vector, const Places& places) {
  static const std::map<std::string, QuestionKind> kinds = {
      {"manifest", QuestionKind::Manifest},
      {"source", QuestionKind::Source},
      {"extension", QuestionKind::Extension},
      {"folder", QuestionKind::Folder}};
  Question question;
  question.kind = kinds.at(vector.kind);
  question.asked = WideFromUtf8(places.Fill(question.kind == QuestionKind::Folder ? vector.folder.second : vector.asked));
  if (question.kind == QuestionKind::Folder) {
    EXPECT_TRUE(FindFolderKind(vector.folder.first, question.folderKind));
  }
  return question;
}

class LibraryPermissionTest : public testing::TestWithParam<PermissionGroup> {
 protected:
  LibraryPermissionTest() { places.Set("module", permit.ModuleFolder()); }

  void ExpectAnswer(const PermitDocument& document, const GroupEntries& entries, const PermissionQuestion& vector) {
    if (vector.isUnresolved) {
      EXPECT_THROW(Explain(document, QuestionOf(vector, places)), Unanswered);
      return;
    }
    const Answer answer = Explain(document, QuestionOf(vector, places));
    EXPECT_EQ(vector.isPermitted, answer.isPermitted);
    const int line = vector.by ? entries.LineOf({vector.by->first, places.Fill(vector.by->second)}) : 0;
    EXPECT_EQ(line, answer.by ? answer.by->line : 0);
    if (vector.reason) {
      EXPECT_EQ(*vector.reason, answer.nearest ? NameOf(answer.nearest->reason) : "nothing is near");
    }
    if (vector.nearest) {
      EXPECT_EQ(*vector.nearest, answer.nearest ? answer.nearest->entry->text : "");
    }
    if (vector.understood) {
      EXPECT_EQ(places.Fill(*vector.understood), answer.understood);
    }
  }

  const LogCapture log;
  PermitFile permit;
  Places places;
};

TEST_P(LibraryPermissionTest, AnswersAsTheVectorsSay) {
  const GroupEntries entries(GetParam(), places, Beside::WhatItNeeds);
  entries.AddTo(permit);
  permit.Write();
  const PermitDocument document(WideFromAnsi(permit.Path().c_str()));
  ASSERT_TRUE(document.IsUsable()) << GetParam().name;
  for (const PermissionQuestion& vector : GetParam().questions) {
    SCOPED_TRACE(GetParam().name + ": " + vector.name);
    ExpectAnswer(document, entries, vector);
  }
}

INSTANTIATE_TEST_SUITE_P(Groups, LibraryPermissionTest, testing::ValuesIn(PermissionGroups()), TestNameOf<PermissionGroup>);

IfFileExists PolicyOf(const std::string& name) {
  static const std::map<std::string, IfFileExists> policies = {
      {"none", IfFileExists::Overwrite}, {"Overwrite", IfFileExists::Overwrite}, {"Skip", IfFileExists::Skip},
      {"Cancel", IfFileExists::Cancel},  {"Rename", IfFileExists::Rename},       {"Update", IfFileExists::Update}};
  return policies.at(name);
}

std::string ActionOf(FileAction action) {
  static const std::map<FileAction, std::string> names = {
      {FileAction::Replace, "replace"},
      {FileAction::LeaveAlone, "leave"},
      {FileAction::Cancel, "cancel"},
      {FileAction::MoveAside, "move-aside"},
      {FileAction::Refuse, "refuse"}};
  return names.at(action);
}

class LibraryFileTest : public testing::TestWithParam<FileQuestion> {
 protected:
  LibraryFileTest() : vector(GetParam()) {
    places.Set("folder", folder.Path());
    path = places.Fill(vector.file);
    machine.Put(path.c_str(), vector.Attributes(), TimeOf(vector.fileTime));
    for (const std::string& pattern : vector.taken) {
      for (const std::string& name : places.FillAll(pattern))
        PutTaken(name);
    }
    if (vector.sourceTime) {
      const FILETIME sourceTime = TimeOf(*vector.sourceTime);
      time.SetFileTime(&sourceTime);
    } else if (vector.commandTime) {
      time.SetText(vector.commandTime->c_str());
    }
  }

  void PutTaken(const std::string& name) {
    const bool isFolder = name.back() == '\\';
    const std::string plain = isFolder ? name.substr(0, name.size() - 1) : name;
    machine.Put(plain.c_str(), isFolder ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL, FILETIME());
  }

  const FileQuestion& vector;
  const LogCapture log;
  TemporaryFolder folder;
  Places places;
  std::string path;
  RehearsedMachine machine;
  CXMLFileTime time;
};

TEST_P(LibraryFileTest, IsDecidedAsTheVectorSays) {
  SCOPED_TRACE(vector.name);
  FileDecision decision;
  DecideOnExistingFile(PolicyOf(vector.policy), path.c_str(), vector.force, time, machine, decision);
  EXPECT_EQ(vector.action, ActionOf(decision.action));
  EXPECT_HRESULT(vector.result, decision.result);
  EXPECT_EQ(vector.movedTo ? places.Fill(*vector.movedTo) : "", decision.newName);
  const bool losesProtection = decision.action == FileAction::Replace &&
                               (vector.Attributes() & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN)) != 0;
  EXPECT_EQ(losesProtection, decision.losesProtection);
}

INSTANTIATE_TEST_SUITE_P(Questions, LibraryFileTest, testing::ValuesIn(FileQuestions()), TestNameOf<FileQuestion>);

}  // namespace
