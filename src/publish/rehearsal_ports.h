#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ports/database.h"
#include "ports/front_end.h"
#include "ports/page_file.h"
#include "ports/ports.h"
#include "ports/settings_store.h"
#include "publish/watched_engine.h"

namespace publish {

// While it exists, the code of the updater meets a machine of its own: the product's databases lie
// in the given folder, boxes are kept instead of shown, questions are answered no, and a listener
// hears what is done with the database engine. A stop that the user asks for ends every reading and
// writing of a database by the embedded engine.
class RehearsalPorts {
 public:
  RehearsalPorts(const std::string& database_folder, EngineListener& listener);
  RehearsalPorts(const RehearsalPorts&) = delete;
  RehearsalPorts& operator=(const RehearsalPorts&) = delete;
  ~RehearsalPorts();

  // The texts of the boxes, in order.
  const std::vector<std::string>& Boxes() const { return boxes_; }

 private:
  ports::Ports saved_;
  std::vector<std::string> boxes_;
  std::unique_ptr<ports::FrontEnd> front_end_;
  std::unique_ptr<ports::SettingsStore> settings_;
  std::unique_ptr<ports::DatabaseEngine> engine_;
  std::unique_ptr<ports::PageFiles> page_files_;
};

}  // namespace publish
