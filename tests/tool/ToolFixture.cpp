#include "tool/ToolFixture.h"

#include <rapidjson/document.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>

#include <sstream>

#include "advice/Words.h"
#include "support/Pages.h"
#include "support/PermitFile.h"

namespace {

rapidjson::Document Parsed(const std::string& text) {
  rapidjson::Document document;
  document.Parse(text.c_str(), text.size());
  return document;
}

// What keeps a document from following the schema of the documentation; empty when nothing does.
std::string SchemaComplaint(const std::string& text) {
  static const std::string schemaText = ReadPage("docs/tool.schema.json");
  static const rapidjson::Document schemaSource = Parsed(schemaText);
  static const rapidjson::SchemaDocument schema(schemaSource);
  const rapidjson::Document document = Parsed(text);
  if (document.HasParseError())
    return "it is no JSON";
  rapidjson::SchemaValidator validator(schema);
  if (document.Accept(validator))
    return {};
  rapidjson::StringBuffer place;
  validator.GetInvalidDocumentPointer().StringifyUriFragment(place);
  return std::string(validator.GetInvalidSchemaKeyword()) + " at " + place.GetString();
}

}  // namespace

ToolTest::ToolTest() {
  for (const char* const file : {"norvik.exe", "norvik.dll"})
    CopyBuilt(file, folder.Path());
  WriteWholeFile(folder.File("permit.xml"), PermitText());
  WriteWholeFile(folder.File("a.txt"), "a");
  WriteWholeFile(folder.File("manifest.xml"), ManifestText(CopyOfA()));
}

ProgramResult ToolTest::Run(const std::vector<std::wstring>& arguments) const {
  return RunProgram(folder.File("norvik.exe"), arguments, folder.Path());
}

Json ToolTest::RunJson(std::vector<std::wstring> arguments, unsigned long expectedCode) const {
  arguments.emplace_back(L"--json");
  const ProgramResult result = Run(arguments);
  EXPECT_EQ(expectedCode, result.code) << result.output << result.errors;
  EXPECT_EQ("", SchemaComplaint(result.output)) << result.output;
  EXPECT_EQ("", result.errors);
  return Json::parse(result.output, nullptr, false);
}

std::string ToolTest::PermitText(const std::string& entries) const {
  return "<?xml version=\"1.0\"?>\n<!DOCTYPE VantorPermissions SYSTEM \"permit.dtd\">\n<VantorPermissions version=\"1.0\">\n"
         "<Source>\n" +
         XmlElement("URL", folder.Path() + "\\") + "\n<URL>http://apps.example.com/tools/</URL>\n" + entries +
         "<Extension>txt</Extension>\n<Extension>xml</Extension>\n</Source>\n<Destination>\n" +
         XmlElement("Path", Destination()) + "\n</Destination>\n</VantorPermissions>\n";
}

std::string ToolTest::ManifestText(const std::string& commands) {
  return "<?xml version=\"1.0\"?>\n<!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\">\n<VantorManifest version=\"1.0\">\n" +
         commands + "</VantorManifest>\n";
}

std::string ToolTest::CopyOfA() const {
  return "<Copy><Source>" + folder.File("a.txt") + "</Source><Destination><Path>" + Destination() +
         "</Path></Destination></Copy>\n";
}

std::vector<std::string> LinesOf(const std::string& output) {
  std::vector<std::string> lines;
  std::istringstream stream(output);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

std::string Repeated(const std::string& text, int times) {
  std::string repeated;
  for (int i = 0; i < times; ++i)
    repeated += text;
  return repeated;
}
