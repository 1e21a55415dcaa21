#include "publish/rehearsal_ports.h"

#include <optional>
#include <utility>

#include "foundation/contract_names.h"
#include "services/product_settings.h"
#include "tools/stop.h"

namespace publish {
namespace {

class KeepingFrontEnd final : public ports::FrontEnd {
 public:
  explicit KeepingFrontEnd(std::vector<std::string>& boxes) : boxes_(boxes) {}

  bool CanAsk() override { return false; }
  void ShowMessage(ports::MessageKind /*kind*/, const std::string& /*title*/,
                   const std::string& text, const std::string& /*advice*/) override {
    boxes_.push_back(text);
  }
  bool AskYesNo(const std::string& /*title*/, const std::string& question) override {
    boxes_.push_back(question);
    return false;
  }
  std::optional<std::string> AskText(const std::string& /*title*/, const std::string& /*prompt*/,
                                     bool /*is_secret*/) override {
    return std::nullopt;
  }
  std::optional<std::string> AskSavePlace(const std::string& /*title*/,
                                          const std::string& /*suggested_name*/) override {
    return std::nullopt;
  }
  void RunPendingEvents() override {}
  void ResetCursor() override {}
  std::unique_ptr<ports::ProgressView> MakeProgressView() override { return nullptr; }
  std::unique_ptr<ports::ErrorView> MakeErrorView() override { return nullptr; }

 private:
  std::vector<std::string>& boxes_;
};

// The settings of a machine on which only the databases' folder is set.
class FolderSettings final : public ports::SettingsStore {
 public:
  explicit FolderSettings(std::string folder) : folder_(std::move(folder)) {}

  ports::Setting<std::string> ReadString(ports::SettingsRoot /*root*/, const std::string& /*key*/,
                                         const std::string& name) override {
    const bool is_folder = name == tmw::names::kDataBasePathSetting;
    return ports::Setting<std::string>::Success(is_folder ? std::optional(folder_) : std::nullopt);
  }
  bool Exists(ports::SettingsRoot /*root*/, const std::string& /*key*/,
              const std::string& name) override {
    return name == tmw::names::kDataBasePathSetting;
  }
  bool HasFolderDefaults() const override { return false; }
  bool IsChosenByEnvironment(ports::SettingsRoot /*root*/) const override { return false; }
  ports::Setting<std::int32_t> ReadLong(ports::SettingsRoot /*root*/, const std::string& /*key*/,
                                        const std::string& /*name*/) override {
    return ports::Setting<std::int32_t>::Success(std::nullopt);
  }
  std::string PlaceOf(ports::SettingsRoot /*root*/) override { return {}; }
  std::string FailureText(ports::SettingsRoot /*root*/) override { return {}; }

 private:
  std::string folder_;
};

class StoppingPageFile final : public ports::PageFile {
 public:
  explicit StoppingPageFile(std::unique_ptr<ports::PageFile> file) : file_(std::move(file)) {}

  ports::Outcome<std::uint64_t> Size() override { return file_->Size(); }
  ports::Outcome<ports::FileIdentity> Identity() override { return file_->Identity(); }
  ports::Outcome<std::size_t> ReadAt(std::uint64_t offset, void* data,
                                     std::size_t length) override {
    tools::ThrowIfStopped();
    return file_->ReadAt(offset, data, length);
  }
  ports::Status WriteAt(std::uint64_t offset, const void* data, std::size_t length) override {
    tools::ThrowIfStopped();
    return file_->WriteAt(offset, data, length);
  }
  ports::Status Flush() override { return file_->Flush(); }
  ports::Status Close() override { return file_->Close(); }
  bool MeansFull(ports::SystemCode code) const override { return file_->MeansFull(code); }

 private:
  std::unique_ptr<ports::PageFile> file_;
};

class StoppingPageFiles final : public ports::PageFiles {
 public:
  explicit StoppingPageFiles(ports::PageFiles& files) : files_(files) {}

  ports::Outcome<std::unique_ptr<ports::PageFile>> Open(const std::string& path,
                                                        ports::PageFileMode mode) override {
    auto opened = files_.Open(path, mode);
    if (opened) opened.value = std::make_unique<StoppingPageFile>(std::move(opened.value));
    return opened;
  }
  ports::Outcome<ports::FileIdentity> IdentityOf(const std::string& path) override {
    return files_.IdentityOf(path);
  }

 private:
  ports::PageFiles& files_;
};

}  // namespace

RehearsalPorts::RehearsalPorts(const std::string& database_folder, EngineListener& listener)
    : saved_(ports::CurrentPorts()),
      front_end_(std::make_unique<KeepingFrontEnd>(boxes_)),
      settings_(std::make_unique<FolderSettings>(database_folder)),
      engine_(MakeWatchedEngine(*saved_.database, listener)),
      page_files_(std::make_unique<StoppingPageFiles>(*saved_.page_files)) {
  ports::Ports& ports = ports::CurrentPorts();
  ports.front_end = front_end_.get();
  ports.settings = settings_.get();
  ports.database = engine_.get();
  ports.page_files = page_files_.get();
  tmw::ForgetProductPaths();
}

RehearsalPorts::~RehearsalPorts() {
  ports::CurrentPorts() = saved_;
  tmw::ForgetProductPaths();
}

}  // namespace publish
