#include "rollback/decision.h"

#include <vector>

#include "rollback/rollback_texts.h"
#include "services/message_boxes.h"
#include "services/updater_settings.h"

namespace rollback {
namespace {

const std::string kParagraph = texts::kBreak + texts::kBreak;

std::string Heading(const Findings& findings) {
  const tmw::KeptList& list = findings.List;
  std::vector<std::string> lines = {texts::Files(findings.Replaced, findings.Added)};
  if (findings.IsUpdateUnfinished) lines.emplace_back(texts::kUpdateUnfinished);
  if (!tmw::GetUpdaterSettings().IsClientInstallation) lines.emplace_back(texts::kClientsStayNew);
  return texts::Versions(list.OldVersion, list.NewVersion, list.Date) + kParagraph +
         tmw::Joined(lines, texts::kBreak);
}

bool Ask(const std::string& text, const char* question) {
  return tmw::AskQuestion(texts::kTitle, text + kParagraph + question);
}

}  // namespace

std::string Summary(const Findings& findings, const std::string& set_aside) {
  std::string text = Heading(findings);
  if (findings.BooksState == Books::kChanged) {
    text += kParagraph + texts::BooksComeBack(findings.List.Date, set_aside);
  } else if (!tmw::GetUpdaterSettings().IsClientInstallation) {
    text += kParagraph + texts::kBooksUntouched;
  }
  return text;
}

Decision Decide(const Findings& findings, const Wishes& wishes, const std::string& set_aside) {
  const bool has_books = findings.BooksState == Books::kChanged;
  const Decision all = has_books ? Decision::kFilesAndBooks : Decision::kFiles;
  if (wishes.IsConfirmed) return wishes.FilesOnly ? Decision::kFiles : all;
  if (!has_books)
    return Ask(Summary(findings, ""), texts::kFilesQuestion) ? all : Decision::kNothing;
  if (!wishes.FilesOnly && Ask(Summary(findings, set_aside), texts::kBooksQuestion)) return all;
  const std::string text = Heading(findings) + kParagraph + texts::kFilesOnlyWarning;
  return Ask(text, texts::kFilesOnlyQuestion) ? Decision::kFiles : Decision::kNothing;
}

}  // namespace rollback
