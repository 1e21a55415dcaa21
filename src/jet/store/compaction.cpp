#include "jet/store/compaction.h"

#include "jet/errors.h"
#include "jet/file/checker.h"
#include "jet/file/database_writer.h"
#include "jet/store/container.h"
#include "jet/store/new_file.h"

namespace jet {
namespace {

// The file is judged as it lies on the disk, by rules that the writer does not share.
void RefuseDamaged(const NewFile& file, const std::string& name) {
  const file::CheckReport report =
      file::CheckDatabase(file.Pages(), name, file::CheckDepth::kStructure);
  if (report.IsClean()) return;
  Fail(kDatabaseDamaged, name, report.findings.Kept().front().Text());
}

}  // namespace

void Compact(const std::string& source, const std::string& target) {
  RefuseTaken(target);
  Container from(source, true, Purpose::kRewriting);
  NewFile to(target);
  {
    file::DatabaseWriter writer({to.Pages(), to.Path()}, from.Reader());
    writer.CopyAll(file::Copying::kCompacted);
    writer.Finish();
  }
  RefuseDamaged(to, target);
  to.TakeRightsOf(from.Path());
  to.Appear();
  if (!to.FlushName()) Fail(kDiskError);
}

}  // namespace jet
