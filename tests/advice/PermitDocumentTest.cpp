#include "advice/PermitDocument.h"

#include <gtest/gtest.h>

#include "advice/Document.h"
#include "advice/Words.h"
#include "support/InternetCache.h"
#include "support/PermitFile.h"
#include "support/WebServer.h"

namespace {

PermitDocument Read(const PermitFile& permit) {
  return PermitDocument(WideFromAnsi(permit.Path().c_str()));
}

TEST(PermitDocumentTest, PairsTheModulesEntriesWithTheLines) {
  PermitFile permit;
  permit.Write(
      "<?xml version=\"1.0\"?><!DOCTYPE VantorPermissions SYSTEM \"permit.dtd\">\n<VantorPermissions "
      "version=\"1.0\"><Source>\n<URL>http://a/b/</URL>\n<URL> http://c/d/ "
      "</URL>\n"
      "<Extension>txt</Extension>\n</Source><Destination>\n<Temp>x</Temp>\n<Path>C:\\P</Path>\n<Temp>y</Temp>\n"
      "</Destination></VantorPermissions>\n");
  const PermitDocument document = Read(permit);
  ASSERT_TRUE(document.IsUsable()) << document.Complaint();
  ASSERT_EQ(6u, document.Entries().size());
  EXPECT_EQ(4, document.Entries()[1].line);
  EXPECT_EQ("http://c/d/", document.Entries()[1].text);
  for (const PermitEntry& entry : document.Entries()) {
    ASSERT_NE(nullptr, entry.item) << entry.line;
    EXPECT_EQ(&entry, document.EntryOf(entry.item)) << entry.line;
  }
  const auto* const second = static_cast<const CDestinationFolder*>(document.Entries()[5].item);
  EXPECT_STREQ("y", second->GetPath() + std::string(second->GetPath()).size() - 1);
  EXPECT_EQ(FolderKind::Temp, document.Entries()[5].folderKind);
  EXPECT_EQ(nullptr, document.EntryOf(nullptr));
}

// The module's list of a name ends at the first entry that it cannot use.
TEST(PermitDocumentTest, AnEntryThatTheModuleLeavesOutHasNoItem) {
  PermitFile permit;
  permit.URL("http://a/").Extension("txt").Folder("Temp", std::string(300, 'x')).Folder("Temp", "y").Folder("Path", "C:\\P");
  permit.Write();
  const PermitDocument document = Read(permit);
  ASSERT_TRUE(document.IsUsable()) << document.Complaint();
  ASSERT_EQ(5u, document.Entries().size());
  EXPECT_EQ(nullptr, document.Entries()[2].item);
  EXPECT_EQ(nullptr, document.Entries()[3].item);
  EXPECT_NE(nullptr, document.Entries()[4].item);
}

TEST(PermitDocumentTest, ReadsFromTheWebWithOneRequest) {
  WebServer server;
  PermitFile permit;
  permit.URL("http://a/").Extension("txt").Folder("InternetCache").Write();
  server.Answer("/permit.xml", Response().Body(permit.Content()));
  const std::wstring url = WideFromAnsi(server.Url("/permit.xml").c_str());
  const PermitDocument document(url);
  ASSERT_TRUE(document.IsUsable()) << document.Complaint();
  EXPECT_EQ(3u, document.Entries().size());
  EXPECT_EQ(permit.Content(), document.Bytes());
  EXPECT_EQ(url, document.Location());
  EXPECT_EQ(std::vector<std::string>{"GET /permit.xml"}, server.Asked());
  EXPECT_EQ("", CachedFile(server.Url("/permit.xml")));
}

TEST(PermitDocumentTest, WhatTheModuleRefusesIsNotUsableAndSaysWhy) {
  PermitFile permit;
  permit.Write("<VantorPermissions version=\"1.0\"><Source/></VantorPermissions>");
  const PermitDocument document = Read(permit);
  EXPECT_FALSE(document.IsUsable());
  EXPECT_EQ(nullptr, document.Permissions());
  EXPECT_HRESULT(E_FAIL, document.Code());
  EXPECT_NE("", document.Complaint());
  EXPECT_TRUE(document.Text().isWellFormed);
}

TEST(PermitDocumentTest, AMissingFileIsAnUnansweredQuestion) {
  const TemporaryFolder folder;
  EXPECT_THROW(PermitDocument(WideFromAnsi(folder.File("none.xml").c_str())), Unanswered);
  EXPECT_THROW(PermitDocument(WideFromAnsi(folder.Path().c_str())), Unanswered);
  EXPECT_THROW(PermitDocument(L"nul"), Unanswered);
}

TEST(PermitDocumentTest, EveryFolderKindHasAnElement) {
  for (LONG number = 1; number <= 13; ++number) {
    FolderKind found = FolderKind::Path;
    const std::string name = ElementNameOf(static_cast<FolderKind>(number));
    EXPECT_TRUE(FindFolderKind(name, found)) << number;
    EXPECT_EQ(number, static_cast<LONG>(found));
  }
  FolderKind untouched = FolderKind::Temp;
  EXPECT_FALSE(FindFolderKind("Nowhere", untouched));
  EXPECT_STREQ("", ElementNameOf(static_cast<FolderKind>(14)));
}

}  // namespace
