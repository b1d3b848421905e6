#include "advice/InvalidDocument.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "advice/FindingKind.h"
#include "advice/KeptLog.h"
#include "advice/Words.h"
#include "transfer/DocumentHead.h"
#include "transfer/Transfer.h"

namespace {

class Bytes final : public ByteSource {
 public:
  explicit Bytes(const std::string& readBytes) : bytes(readBytes) {}

  bool Read(void* buffer, DWORD size, DWORD& count) override {
    count = static_cast<DWORD>(std::min<std::size_t>(size, bytes.size() - position));
    std::memcpy(buffer, bytes.data() + position, count);
    position += count;
    lines += LineEnds(static_cast<const char*>(buffer), count);
    return true;
  }

  int Lines() const { return lines; }

  static int LineEnds(const char* text, std::size_t length) {
    return static_cast<int>(std::count(text, text + length, '\n'));
  }

 private:
  const std::string& bytes;
  std::size_t position = 0;
  int lines = 0;
};

class LineCounter final : public DestinationWriter {
 public:
  bool Create(DWORD /*attributes*/) override { return true; }
  bool Write(const void* bytes, DWORD count) override {
    lines += Bytes::LineEnds(static_cast<const char*>(bytes), count);
    return true;
  }

  bool SetTime(const FILETIME& /*newTime*/) override { return true; }
  bool Close() override { return true; }
  void Delete() override {}

  int Lines() const { return lines; }

 private:
  int lines = 0;
};

// A line of the document that the module makes of this one, in this one; 0 in the document type.
int LineAsItStands(int line, const RefusedDocument& document) {
  const KeptLog log;
  Bytes source(document.bytes);
  LineCounter prepared;
  if (line == 0 || FAILED(PrepareDocumentHead(source, prepared, document.kind, nullptr)))
    return 0;
  const int original = line - prepared.Lines() + source.Lines();
  return line > prepared.Lines() ? std::max(original, 0) : 0;
}

struct ParserComplaint {
  int line = 0;
  std::string reason;
};

// "XML Parsing Error in '...'\r\n\tline 7: reason.": the name is that of a copy, which is of no use to anybody.
bool Take(const std::string& complaint, ParserComplaint& taken) {
  constexpr char kLine[] = "'\r\n\tline ";
  const std::size_t place = complaint.find(kLine);
  if (complaint.rfind("XML Parsing Error in '", 0) != 0 || place == std::string::npos)
    return false;
  const char* const number = complaint.c_str() + place + std::strlen(kLine);
  taken.line = std::atoi(number);
  const char* const colon = std::strchr(number, ':');
  taken.reason = colon ? colon + 1 : "";
  const auto isEdge = [](char character) { return std::strchr(" .\r\n\t", character) != nullptr; };
  while (!taken.reason.empty() && isEdge(taken.reason.back()))
    taken.reason.pop_back();
  taken.reason.erase(0, taken.reason.find_first_not_of(" \t\r\n"));
  return true;
}

const char* NameOf(DWORD kind) {
  return kind == kTransferManifest ? "manifest" : "permission file";
}

Finding Invalid(int line, const std::string& message) {
  return {kInvalid.level, kInvalid.code, line, "", WithoutCredentials(message)};
}

Finding NotWellFormed(const Outline& outline) {
  const std::string reason = outline.errorReason.empty() ? "it is empty or broken" : outline.errorReason;
  return Invalid(outline.errorLine, "This is no XML document that can be read: " + reason +
                                        ". Mend the place, and look at the elements just before it too.");
}

Finding HeadRefused(const RefusedDocument& document) {
  return Invalid(
      1, std::string("A ") + NameOf(document.kind) +
             " has to begin with its XML declaration and then its document type declaration, each shorter than 512 "
             "bytes, with no comment between them.");
}

Finding NotValid(const RefusedDocument& document, const ParserComplaint& complaint) {
  constexpr char kUnknown[] =
      "an element or an attribute is missing, unknown or in a place where it may not stand, and the parser does not tell "
      "which";
  return Invalid(LineAsItStands(complaint.line, document),
                 std::string("This is no valid ") + NameOf(document.kind) + ": " +
                     (complaint.reason.empty() ? kUnknown : complaint.reason) + ".");
}

}  // namespace

Finding InvalidFinding(const RefusedDocument& document) {
  if (!document.outline.isWellFormed)
    return NotWellFormed(document.outline);
  ParserComplaint complaint;
  if (Take(document.complaint, complaint))
    return NotValid(document, complaint);
  if (document.complaint.rfind("Invalid XML document", 0) == 0 || document.complaint.rfind("Not an XML document", 0) == 0)
    return HeadRefused(document);
  const std::string reason = document.complaint.empty() ? ReasonText(document.code) : document.complaint;
  return Invalid(0, std::string("The module refuses this ") + NameOf(document.kind) + ": " + reason);
}

Finding WhyInvalid(const PermitDocument& permit) {
  return InvalidFinding({permit.Text(), permit.Bytes(), kTransferPermitFile, permit.Code(), permit.Complaint()});
}

std::string SentenceOf(const Finding& finding) {
  return finding.line ? "Line " + std::to_string(finding.line) + ": " + finding.message : finding.message;
}
