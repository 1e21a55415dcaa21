#pragma once

#include <array>
#include <string_view>

// Names that others rely on: the product, its siblings, the maker's servers, updaters of other
// releases. No other file spells them.
namespace tmw::names {

// Products and the titles they bear in questions.
inline constexpr std::string_view kProductCode = "TMW";
inline constexpr std::string_view kProductTitle = "Tamrin";
inline constexpr std::string_view kFskTitle = "Tamrin: Fsk";
inline constexpr std::string_view kDocLensTitle = "Tamrin: DocLens";

// Named mutexes that each application holds while it runs.
inline constexpr std::string_view kProductMutex = "Local\\Tamrin_Mutex";
inline constexpr std::string_view kFskMutex = "Local\\Fsk_Mutex";
inline constexpr std::string_view kDocLensMutex = "Local\\DocLens_Mutex";
inline constexpr std::string_view kUpdaterMutex = "Local\\TMW_WebUpdate_Mutex";

struct GuardedApplication {
  std::string_view title;
  std::string_view mutex;
};

// What has to be closed before the updater works, in the order of asking.
inline constexpr std::array<GuardedApplication, 3> kGuardedApplications = {{
    {kProductTitle, kProductMutex},
    {kFskTitle, kFskMutex},
    {kDocLensTitle, kDocLensMutex},
}};

// Command-line options; compared without regard to case.
inline constexpr std::string_view kOptionNoFinalMessage = "-y";
inline constexpr std::string_view kOptionRestarted = "-r";
inline constexpr std::string_view kOptionNormalExit = "-d";
inline constexpr std::string_view kOptionTempCopy = "-t";
inline constexpr std::string_view kOptionElevated = "-a";
inline constexpr std::string_view kOptionUrl = "-w";
inline constexpr std::string_view kOptionOldVersion = "-v";
inline constexpr std::string_view kOptionMainExe = "-e";
inline constexpr std::string_view kOptionMainParams = "-p";

// Settings: key, sections, values.
inline constexpr std::string_view kProductKey = "SOFTWARE\\Kestrel Soft\\Tamrin";
inline constexpr std::string_view kDevelopmentKey = "SOFTWARE\\Kestrel Soft Development\\Tamrin";
inline constexpr std::string_view kGeneralSection = "General";
inline constexpr std::string_view kAutoUpdateSection = "AutoUpdate";
inline constexpr std::string_view kInstallationTypeSetting = "InstallationType";
inline constexpr std::string_view kClientInstallation = "client";  // lower-cased
inline constexpr std::string_view kRootPathSetting = "RootPath";
inline constexpr std::string_view kDataBasePathSetting = "DataBasePath";
inline constexpr std::string_view kUpdateKeysSetting = "UpdateKeys";
inline constexpr std::string_view kProxyTypeSetting = "ProxyType";
inline constexpr std::string_view kProxyServerSetting = "ProxyServer";
inline constexpr std::string_view kIsCustomUrlSetting = "IsCustomUrl";
inline constexpr std::string_view kCustomUrlSetting = "CustomUrl";
inline constexpr std::string_view kNoFtpSetting = "NoFtp";
inline constexpr std::string_view kNoRegisteringSetting = "NoRegistering";

// Where the product stands on Windows when no setting says so.
inline constexpr std::string_view kDefaultRootPath = "c:\\Program Files\\Kestrel Soft\\TMW\\";

// The installation.
inline constexpr std::string_view kProgramFolder = "tm";
inline constexpr std::string_view kUpdaterProgram = "TmWebUpdate";  // and the system's ending
inline constexpr std::string_view kNetworkMarkMask = "client*.cln";
inline constexpr std::string_view kUserDatabase = "Tamrin.mdb";
inline constexpr std::string_view kLockFile = "TmWebUpdate.lock";
inline constexpr std::string_view kSerialFile = "TmWebUpdate.serial";

// The log: one for people, one of JSON lines, and what each was before it grew too long.
inline constexpr std::string_view kLogName = "TmWebUpdate";
inline constexpr std::string_view kLogEnding = ".log";
inline constexpr std::string_view kOldLogEnding = ".old.log";
inline constexpr std::string_view kJsonLogEnding = ".jsonl";
inline constexpr std::string_view kOldJsonLogEnding = ".old.jsonl";

// The marks of an installation under way: in the release's working folder, in the product's root.
inline constexpr std::string_view kReleaseMark = "_Installing.txt";
inline constexpr std::string_view kRootMark = "TMW_Installing.txt";

// The way back. What the last update replaced is kept in a folder of the product's root, with a
// list of it; the mark of a rollback under way and the record of the last one lie in the root.
inline constexpr std::string_view kRollbackProgram = "TmRollback";  // and the system's ending
inline constexpr std::string_view kKeptFolder = "Предыдущая версия";
inline constexpr std::string_view kKeptList = "TMW_Kept.txt";
inline constexpr std::string_view kRollbackMark = "TMW_Rollback.txt";
inline constexpr std::string_view kRollbackRecord = "TMW_LastRollback.txt";
inline constexpr std::string_view kSetAsideName = " (до отката ";  // behind the database's name
inline constexpr std::string_view kRollbackFolderEnding = "_Rollback";

// The maker's server.
inline constexpr std::string_view kDigestFile = "TMW_version.dat";
inline constexpr std::string_view kSignatureEnding = ".minisig";
inline constexpr std::string_view kServerListFile = "TMW_links.dat";
inline constexpr std::string_view kManifestPackage = "_PackageManifest.tmz";
inline constexpr std::string_view kManifestFile = "_manifest.xml";

// Working folders: behind the product code in the temporary folder, then one a release.
inline constexpr std::string_view kTempFolderEnding = "_WebUpdate";
inline constexpr std::string_view kPartsFolder = "Parts";
inline constexpr std::string_view kLoadedFolder = "Loaded";
inline constexpr std::string_view kScriptsFolder = "DBUpdates";
inline constexpr std::string_view kStructuresFolder = "DBStruct";

// Endings of file names.
inline constexpr std::string_view kPackageEnding = ".tmz";
inline constexpr std::string_view kTableEnding = ".table";
inline constexpr std::string_view kTableStructureEnding = ".tablestruct";
inline constexpr std::string_view kPackedTableEnding = ".table.tmz";
inline constexpr std::string_view kVersionTable = "dbversion";  // lower-cased
inline constexpr std::string_view kSystemTablePrefix = "msys";  // lower-cased
inline constexpr std::string_view kPackingEnding = ".packing";
inline constexpr std::string_view kScriptMask = "*.xml";
inline constexpr std::string_view kNewDatabaseEnding = ".new";  // whole, beside the old one
inline constexpr std::string_view kReferenceDatabaseEnding = "_LastVer.mdb";
inline constexpr std::string_view kBackupEnding = ".zip";
inline constexpr std::string_view kPartEnding = ".part";
inline constexpr std::string_view kNewPartEnding = ".new";

}  // namespace tmw::names
