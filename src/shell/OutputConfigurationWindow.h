#pragma once

#include <QWidget>

class QTreeWidget;

namespace lumivane {

class OutputConfigurationForm;

// The output configuration form as the operator sees it: the list of outputs with their mirror
// letters, the mirror and reset buttons, the number of outputs and the identify switch, each a
// view of OutputConfigurationForm's controls.
class OutputConfigurationWindow final : public QWidget {
  Q_OBJECT

 public:
  explicit OutputConfigurationWindow(OutputConfigurationForm& form, QWidget* parent = nullptr);
  // The list of outputs: one row per item of ListOutputs, its tab-separated fields in three
  // columns.
  QTreeWidget* Outputs() const noexcept { return outputs_; }

 private:
  QTreeWidget* outputs_ = nullptr;
};

}  // namespace lumivane
