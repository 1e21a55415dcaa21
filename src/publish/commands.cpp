#include "publish/commands.h"

#include <cstddef>
#include <iostream>
#include <optional>

#include "foundation/text.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "publish/checker.h"
#include "publish/difference.h"
#include "publish/digest.h"
#include "publish/faults.h"
#include "publish/json.h"
#include "publish/progress.h"
#include "publish/publisher.h"

namespace publish {
namespace {

// The arguments of a command; what is taken is gone.
class Arguments {
 public:
  explicit Arguments(std::vector<std::string> arguments) : rest_(std::move(arguments)) {}

  bool TakeFlag(const std::string& name) { return std::erase(rest_, name) > 0; }

  std::optional<std::string> TakeOption(const std::string& name) {
    for (std::size_t i = 0; i < rest_.size(); ++i) {
      if (rest_[i] != name) continue;
      if (i + 1 == rest_.size()) throw UsageError(name + " needs a value");
      std::string value = rest_[i + 1];
      const auto at = rest_.begin() + static_cast<std::ptrdiff_t>(i);
      rest_.erase(at, at + 2);
      return value;
    }
    return std::nullopt;
  }

  std::string TakeNeeded(const std::string& name) {
    const auto value = TakeOption(name);
    if (!value) throw UsageError(name + " is missing");
    return *value;
  }

  // What is left, when it is that many words.
  const std::vector<std::string>& Take(std::size_t count) const {
    for (const std::string& argument : rest_) {
      if (argument.starts_with("--")) throw UsageError("unknown option " + argument);
    }
    if (rest_.size() < count) throw UsageError("too few arguments");
    if (rest_.size() > count) throw UsageError("too many arguments");
    return rest_;
  }

 private:
  std::vector<std::string> rest_;
};

bool IsProgressShown() {
  return ports::CurrentPorts().processes->HasTerminal();
}

void AddFaults(const Faults& faults, JsonWriter& json) {
  json.BeginList("faults");
  for (const Fault& fault : faults.All()) {
    json.BeginObject();
    json.Text("place", fault.place);
    json.Text("text", fault.text);
    json.EndObject();
  }
  json.EndList();
}

// Prints the object, or the faults and the words; the exit code follows from the faults.
ExitCode Answer(bool is_json, JsonWriter& json, const Faults& faults, const std::string& words) {
  if (is_json) {
    AddFaults(faults, json);
    std::cout << json.Finish();
  } else {
    for (const Fault& fault : faults.All())
      std::cout << fault.place << ": " << fault.text << '\n';
    if (!faults.IsEmpty()) std::cout << "faults: " << faults.All().size() << '\n';
    std::cout << words;
  }
  return faults.IsEmpty() ? kDone : kFaultsFound;
}

ExitCode RunPublish(Arguments arguments) {
  const bool is_json = arguments.TakeFlag("--json");
  PublishOptions options;
  options.may_replace = arguments.TakeFlag("--replace");
  options.product = arguments.TakeNeeded("--product");
  options.database = arguments.TakeNeeded("--database");
  options.scripts = arguments.TakeNeeded("--scripts");
  options.output = arguments.TakeNeeded("--output");
  options.description = arguments.Take(1).front();
  Faults faults;
  PublishedRelease made;
  {
    Progress progress(IsProgressShown());
    made = Publish(options, progress, faults);
  }
  JsonWriter json;
  std::string words = "nothing has been published\n";
  if (faults.IsEmpty()) {
    json.Text("version", made.version);
    json.Text("folder", made.folder);
    json.Number("files", static_cast<std::int64_t>(made.files));
    json.Number("dictionaries", static_cast<std::int64_t>(made.dictionaries));
    json.Number("user_tables", static_cast<std::int64_t>(made.user_tables));
    json.Number("scripts", static_cast<std::int64_t>(made.scripts));
    json.Number("volume", made.volume);
    words = made.folder + "\n  files: " + std::to_string(made.files) +
            ", dictionaries: " + std::to_string(made.dictionaries) +
            ", user tables: " + std::to_string(made.user_tables) +
            ", scripts: " + std::to_string(made.scripts) +
            ", bytes of a whole download: " + std::to_string(made.volume) + "\n";
  }
  return Answer(is_json, json, faults, words);
}

ExitCode RunCheck(Arguments arguments) {
  const bool is_json = arguments.TakeFlag("--json");
  const std::string oldest = arguments.TakeOption("--from").value_or("");
  if (!oldest.empty() && !IsVersion(oldest, 3))
    throw UsageError("--from needs a version of three numbers");
  const std::string place = arguments.Take(1).front();
  Faults faults;
  CheckedRelease release;
  {
    Progress progress(IsProgressShown());
    release = CheckRelease(place, oldest, progress, faults);
  }
  JsonWriter json;
  json.Text("version", release.version);
  json.Number("files", static_cast<std::int64_t>(release.files));
  json.Number("tables", static_cast<std::int64_t>(release.tables));
  json.Number("volume", release.volume);
  const std::string words =
      faults.IsEmpty()
          ? "release " + release.version + " is in order: files: " + std::to_string(release.files) +
                ", tables: " + std::to_string(release.tables) +
                ", bytes of a whole download: " + std::to_string(release.volume) + "\n"
          : "";
  return Answer(is_json, json, faults, words);
}

const char* NameOf(DownloadKind kind) {
  if (kind == DownloadKind::kFile) return "file";
  return kind == DownloadKind::kDictionary ? "dictionary" : "package";
}

std::string WordsOf(const Difference& difference) {
  std::string words;
  for (const Download& download : difference.downloads) {
    words += std::to_string(download.bytes) + "\t" + NameOf(download.kind) + "\t" + download.name +
             (download.is_new ? " (new)" : "") + "\n";
  }
  for (const std::string& file : difference.left_over)
    words += "0\tleft over\t" + file + "\n";
  return words + "bytes to download: " + std::to_string(difference.volume) +
         "\nbytes on a client installation: " + std::to_string(difference.client_volume) + "\n";
}

void AddDifference(const Difference& difference, JsonWriter& json) {
  json.BeginList("downloads");
  for (const Download& download : difference.downloads) {
    json.BeginObject();
    json.Text("kind", NameOf(download.kind));
    json.Text("name", download.name);
    json.Number("bytes", download.bytes);
    json.Number("new", download.is_new ? 1 : 0);
    json.EndObject();
  }
  json.EndList();
  json.BeginList("left_over");
  for (const std::string& file : difference.left_over) {
    json.BeginObject();
    json.Text("name", file);
    json.EndObject();
  }
  json.EndList();
  json.Number("volume", difference.volume);
  json.Number("client_volume", difference.client_volume);
}

ExitCode RunDiff(Arguments arguments) {
  const bool is_json = arguments.TakeFlag("--json");
  const std::vector<std::string>& places = arguments.Take(2);
  Faults faults;
  Manifest old_release;
  Manifest new_release;
  const bool has_old = LoadManifest(places[0], old_release, faults);
  const bool has_new = LoadManifest(places[1], new_release, faults);
  JsonWriter json;
  std::string words;
  if (has_old && has_new) {
    const Difference difference = Compare(old_release, new_release);
    json.Text("old", old_release.version);
    json.Text("new", new_release.version);
    AddDifference(difference, json);
    words = old_release.version + " -> " + new_release.version + "\n" + WordsOf(difference);
  }
  return Answer(is_json, json, faults, words);
}

struct Command {
  const char* name;
  ExitCode (*run)(Arguments);
  const char* help;
};

constexpr Command kCommands[] = {
    {"publish", RunPublish,
     R"(  tmpublish publish DESCRIPTION         make a release and announce it
      --product FOLDER                  the product's files
      --database FILE                   the reference database
      --scripts FOLDER                  the update scripts (*.xml)
      --output FOLDER                   what the web server offers; older releases stay
      --replace                         ... even over a release of the same version
)"},
    {"check", RunCheck,
     R"(  tmpublish check FOLDER|URL            read the announced release as the updater will and report
                                        every fault
      --from VERSION                    ... with scripts for databases of this version (3.5.0) on
)"},
    {"diff", RunDiff,
     R"(  tmpublish diff OLD NEW                what a user of the release OLD downloads to get NEW; each is
                                        a release's folder (TMW_3.6.0.2) or its address, or a
                                        server's, which stands for the release it announces
)"}};

constexpr const char* kHelpHead =
    "tmpublish - makes releases for the update server and checks them\n\n";
constexpr const char* kHelpTail = R"(  tmpublish --help | --version

      --json                            with any command: one JSON object on standard output
Exit codes: 0 done, 1 faults found (they are listed; nothing is published), 2 wrong usage,
3 failed or stopped (the reason is on standard error). docs/publishing.md describes DESCRIPTION.
)";

}  // namespace

std::string HelpFor(const std::string& command) {
  std::string commands;
  for (const Command& known : kCommands) {
    if (command == known.name) return std::string(kHelpHead) + known.help + kHelpTail;
    commands += known.help;
  }
  return kHelpHead + commands + kHelpTail;
}

ExitCode RunCommand(std::vector<std::string> arguments) {
  if (arguments.empty()) throw UsageError("no command");
  const std::string name = arguments.front();
  arguments.erase(arguments.begin());
  for (const Command& command : kCommands) {
    if (name == command.name) return command.run(Arguments(std::move(arguments)));
  }
  throw UsageError("unknown command " + name);
}

}  // namespace publish
