#include "tool/Arguments.h"

#include "common/Windows.h"

#include <CLI/CLI.hpp>
#include <map>

#include "advice/Words.h"

namespace {

constexpr char kCheckExample[] =
    "Example:\n"
    "  norvik check permit.xml manifest.xml";
constexpr char kExplainExample[] =
    "Example:\n"
    "  norvik explain --manifest http://apps.example.com/tools/start.xml --extension txt";
constexpr char kPlanExample[] =
    "Example:\n"
    "  norvik plan manifest.xml --permit permit.xml";
constexpr char kRunExample[] =
    "Example:\n"
    "  norvik run manifest.xml";
constexpr char kDoctorExample[] =
    "Example:\n"
    "  norvik doctor --json";
constexpr char kBrowserExample[] =
    "Example:\n"
    "  norvik browser status";
constexpr char kBrowserOnExample[] =
    "Example:\n"
    "  norvik browser on";
constexpr char kBrowserOffExample[] =
    "Example:\n"
    "  norvik browser off";
constexpr char kBrowserKitExample[] =
    "Example:\n"
    "  norvik browser kit --origin https://portal.example.com --out kit";

// The program speaks UTF-8 inside. What is no text has no UTF-8.
std::string CheckedUtf8(const std::wstring& argument) {
  const int length = static_cast<int>(argument.size());
  if (length > 0 &&
      WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, argument.data(), length, nullptr, 0, nullptr, nullptr) == 0)
    throw UsageText{"An argument is not valid text: it has half of a character.\n", true};
  return Utf8(argument);
}

// A name in brackets would be taken for a list of names. All that check takes are files, for which it can be written
// otherwise while the command line is read.
constexpr char kHere[] = ".\\";

std::string FileArgument(const std::string& text) {
  return text.rfind('[', 0) == 0 ? kHere + text : text;
}

std::string FileOfArgument(const std::string& text) {
  return text.rfind(kHere + std::string("["), 0) == 0 ? text.substr(sizeof(kHere) - 1) : text;
}

Question FolderQuestion(const std::string& text) {
  Question question = {QuestionKind::Folder, {}, FolderKind::Path};
  const std::size_t sign = text.find('=');
  const std::string kind = text.substr(0, sign);
  if (!FindFolderKind(kind, question.folderKind))
    throw UsageText{"'" + kind + "' is no kind of folder; 'Personal', 'Temp' and 'Path=C:\\Apps' are examples.\n", true};
  if (sign != std::string::npos)
    question.asked = WideFromUtf8(text.substr(sign + 1));
  return question;
}

// The four options of explain, in the order in which they were given.
std::vector<Question> QuestionsOf(const CLI::App& explain) {
  const std::map<std::string, QuestionKind> kinds = {
      {"--manifest", QuestionKind::Manifest},
      {"--source", QuestionKind::Source},
      {"--extension", QuestionKind::Extension},
      {"--folder", QuestionKind::Folder}};
  std::map<std::string, std::size_t> next;
  std::vector<Question> questions;
  for (const CLI::Option* const option : explain.parse_order()) {
    const std::string name = option->get_name();
    const auto kind = kinds.find(name);
    if (kind == kinds.end())
      continue;
    const std::string& text = option->results().at(next[name]++);
    questions.push_back(kind->second == QuestionKind::Folder ? FolderQuestion(text)
                                                             : Question{kind->second, WideFromUtf8(text), FolderKind::Path});
  }
  return questions;
}

Arguments::Command CommandOf(const std::vector<std::pair<const CLI::App*, Arguments::Command>>& commands) {
  for (const auto& [app, command] : commands) {
    if (app->parsed())
      return command;
  }
  return Arguments::Command::Check;
}

}  // namespace

Arguments ReadArguments(const std::vector<std::wstring>& arguments) {
  CLI::App app("Shows what the Norvik module does with a manifest, and why.", "norvik");
  app.set_version_flag("--version", "norvik " NORVIK_VERSION);
  app.require_subcommand(1);

  std::string permit;
  std::string url;
  std::vector<std::string> ignored;
  Arguments read;
  const auto add = [&](CLI::App* above, const char* name, const char* description, const char* footer) {
    CLI::App* const command = above->add_subcommand(name, description);
    command->allow_windows_style_options(false);
    command->add_flag("--json", read.isJson, "One JSON document on standard output");
    command->footer(footer);
    return command;
  };
  const auto addPermit = [&](CLI::App* command) {
    command->add_option("--permit", permit, "A permission file other than permit.xml beside the program")->type_name("FILE");
  };

  // Each takes one text as it is: a list in brackets is a text like any other.
  const auto addText = [&](CLI::App* command, const char* name, const char* description, const char* typeName) {
    return command->add_option(name, ignored, description)
        ->type_name(typeName)
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
  };

  std::vector<std::string> files;
  CLI::App* const check =
      add(&app, "check", "Tells whether permission files and manifests are valid and sound", kCheckExample);
  addPermit(check);
  check->add_option("FILE", files, "Permission files and manifests; else permit.xml beside the program")
      ->option_text("FILE|URL ...");

  CLI::App* const explain =
      add(&app, "explain", "Tells whether something is permitted, and by which entry", kExplainExample);
  addPermit(explain);
  const auto addQuestion = [&](const char* name, const char* description, const char* typeName) {
    addText(explain, name, description, typeName);
  };
  addQuestion("--manifest", "A manifest's URL or file", "URL");
  addQuestion("--source", "A command's source", "URL");
  addQuestion("--extension", "A file's extension, without a dot", "EXT");
  addQuestion("--folder", "A destination, as its element's name and text", "KIND[=TEXT]");

  CLI::App* const plan = add(&app, "plan", "Tells what a run would do, without doing it", kPlanExample);
  addPermit(plan);
  plan->add_option("URL", url, "The manifest's URL or file")->required();

  CLI::App* const run = add(&app, "run", "Runs a manifest as a page would", kRunExample);
  run->add_option("URL", url, "The manifest's URL or file")->required();

  CLI::App* const doctor = add(&app, "doctor", "Tells whether this machine is ready", kDoctorExample);
  doctor->add_option("--url", url, "A URL whose server is asked once")->type_name("URL");

  CLI::App* const browser = app.add_subcommand("browser", "Whether links in browsers start manifests");
  browser->require_subcommand(1);
  browser->footer(kBrowserExample);
  CLI::App* const browserOn = add(browser, "on", "Lets links start manifests, for all users", kBrowserOnExample);
  CLI::App* const browserOff = add(browser, "off", "Lets links start nothing", kBrowserOffExample);
  CLI::App* const browserStatus = add(browser, "status", "Tells which it is", kBrowserExample);
  CLI::App* const browserKit =
      add(browser, "kit", "Writes browser policies: links of these sites start without a question", kBrowserKitExample);
  const CLI::Option* const origin =
      addText(browserKit, "--origin", "A site, as in https://portal.example.com", "ORIGIN")->required();
  const CLI::Option* const out = addText(browserKit, "--out", "The folder, which is made if need be", "FOLDER")->required();
  browserKit->add_flag("--replace", read.isReplacing, "Replaces files that are there");

  std::vector<std::string> texts;
  for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
    texts.push_back(arguments.front() == L"check" ? FileArgument(CheckedUtf8(*argument)) : CheckedUtf8(*argument));
  try {
    app.parse(texts);
  } catch (const CLI::CallForVersion& version) {
    throw UsageText{std::string(version.what()) + "\n", false};
  } catch (const CLI::CallForHelp&) {
    throw UsageText{app.help(), false};  // of the command whose arguments were read last
  } catch (const CLI::ParseError& error) {
    throw UsageText{WithoutCredentials(error.what()) + "\nRun 'norvik --help' for the commands and their options.\n", true};
  }

  read.permit = WideFromUtf8(permit);
  read.url = WideFromUtf8(url);
  for (const std::string& file : files)
    read.files.push_back(WideFromUtf8(FileOfArgument(file)));
  read.command = CommandOf(
      {{check, Arguments::Command::Check},
       {explain, Arguments::Command::Explain},
       {plan, Arguments::Command::Plan},
       {run, Arguments::Command::Run},
       {doctor, Arguments::Command::Doctor},
       {browserOn, Arguments::Command::BrowserOn},
       {browserOff, Arguments::Command::BrowserOff},
       {browserStatus, Arguments::Command::BrowserStatus},
       {browserKit, Arguments::Command::BrowserKit}});
  if (browserKit->parsed()) {
    read.origins = origin->results();
    read.out = WideFromUtf8(out->results().back());
    if (read.out.empty())
      throw UsageText{"--out names no folder.\n", true};
  }
  if (explain->parsed()) {
    read.questions = QuestionsOf(*explain);
    if (read.questions.empty())
      throw UsageText{"explain needs a question: --manifest, --source, --extension or --folder.\n", true};
  }
  return read;
}
