#include "advice/Document.h"
#include "advice/ExitCode.h"
#include "advice/InvalidDocument.h"
#include "tool/Commands.h"
#include "tool/Console.h"
#include "tool/Json.h"
#include "tool/Report.h"

int ExplainCommand(const Arguments& arguments) {
  const PermitDocument permit(arguments.permit.empty() ? DefaultPermitPath() : arguments.permit);
  if (!permit.IsUsable())
    throw Unanswered("The permission file cannot be used: " + SentenceOf(WhyInvalid(permit)));
  std::vector<Answer> answers;
  bool isAllPermitted = true;
  for (const Question& question : arguments.questions) {
    answers.push_back(Explain(permit, question));
    isAllPermitted = isAllPermitted && answers.back().isPermitted;
  }
  if (arguments.isJson) {
    PrintJson(ToJson(permit, answers));
  } else {
    for (const Answer& answer : answers)
      Print(ReportOf(answer));
  }
  return isAllPermitted ? kYes : kNo;
}
