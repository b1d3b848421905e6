#include "advice/Explanation.h"

#include <memory>
#include <new>

#include "advice/Document.h"
#include "advice/KeptLog.h"
#include "advice/Words.h"

namespace {

template <class Object>
void MustBeMade(const std::unique_ptr<Object>& object, HRESULT hr, const std::string& asked) {
  if (!object || hr == E_OUTOFMEMORY)
    throw std::bad_alloc();
  if (FAILED(hr))
    throw Unanswered("'" + asked + "' cannot be understood: " + ReasonText(hr));
}

// The nearest of the entries of one kind; the first one of those that are equally near.
template <class Item>
std::optional<Nearest> FindNearest(const PermitDocument& permit, EntryKind kind, const Item& candidate) {
  std::optional<Nearest> nearest;
  Nearness best;
  for (const PermitEntry& entry : permit.Entries()) {
    if (entry.kind != kind || !entry.item)
      continue;
    const auto& item = *static_cast<const Item*>(entry.item);
    const std::optional<Mismatch> reason = FindMismatch(item, candidate);
    if (!reason)
      continue;
    const Nearness nearness = NearnessOf(*reason, item, candidate);
    if (nearest && !(best < nearness))
      continue;
    best = nearness;
    nearest = Nearest{&entry, *reason, {}};
  }
  if (nearest)
    nearest->message = MessageOf(nearest->reason, *static_cast<const Item*>(nearest->entry->item), candidate);
  return nearest;
}

template <class Item>
void Conclude(const PermitDocument& permit, EntryKind kind, const CListItem* match, const Item& candidate, Answer& answer) {
  answer.isPermitted = match != nullptr;
  answer.by = permit.EntryOf(match);
  if (!match)
    answer.nearest = FindNearest(permit, kind, candidate);
}

void ExplainURL(const PermitDocument& permit, Answer& answer) {
  const SourceRole role = answer.question.kind == QuestionKind::Manifest ? SourceRole::Manifest : SourceRole::Command;
  HRESULT hr = S_OK;
  const std::unique_ptr<CSourceURL> url(new (std::nothrow) CSourceURL(answer.question.asked.c_str(), role, &hr));
  MustBeMade(url, hr, answer.asked);
  answer.understood = WithoutCredentials(Utf8FromAnsi(url->GetURL()));
  Conclude(permit, EntryKind::URL, permit.Permissions()->GetSources()->FindURL(*url), *url, answer);
}

void ExplainExtension(const PermitDocument& permit, Answer& answer) {
  HRESULT hr = S_OK;
  const std::unique_ptr<CSourceExtension> extension(new (std::nothrow) CSourceExtension(answer.question.asked.c_str(), &hr));
  MustBeMade(extension, hr, answer.asked);
  answer.understood = Utf8FromAnsi(extension->GetText());
  Conclude(permit, EntryKind::Extension, permit.Permissions()->GetSources()->FindExtension(*extension), *extension, answer);
}

void ExplainFolder(const PermitDocument& permit, Answer& answer) {
  HRESULT hr = S_OK;
  const std::unique_ptr<CDestinationFolder> folder(
      new (std::nothrow) CDestinationFolder(answer.question.folderKind, answer.question.asked.c_str(), &hr));
  if (hr == E_OUTOFMEMORY)  // what the module says of a path that is too long
    throw Unanswered("'" + answer.asked + "' is longer than the module can use.");
  MustBeMade(folder, hr, answer.asked);
  answer.understood = Utf8FromAnsi(folder->GetPath());
  Conclude(permit, EntryKind::Folder, permit.Permissions()->GetDestinations()->FindFolder(*folder), *folder, answer);
}

std::string AskedText(const Question& question) {
  std::string text = WithoutCredentials(Utf8(question.asked));
  if (question.kind != QuestionKind::Folder)
    return text;
  const std::string element = ElementNameOf(question.folderKind);
  return text.empty() ? element : element + "=" + text;
}

}  // namespace

const char* NameOf(QuestionKind kind) {
  switch (kind) {
    case QuestionKind::Manifest:
      return "manifest";
    case QuestionKind::Source:
      return "source";
    case QuestionKind::Extension:
      return "extension";
    case QuestionKind::Folder:
      break;
  }
  return "folder";
}

Answer Explain(const PermitDocument& permit, const Question& question) {
  const KeptLog log;  // what the module says about a text that it cannot use is not for the log file
  Answer answer;
  answer.question = question;
  answer.asked = AskedText(question);
  switch (question.kind) {
    case QuestionKind::Manifest:
    case QuestionKind::Source:
      ExplainURL(permit, answer);
      break;
    case QuestionKind::Extension:
      ExplainExtension(permit, answer);
      break;
    case QuestionKind::Folder:
      ExplainFolder(permit, answer);
      break;
  }
  return answer;
}
