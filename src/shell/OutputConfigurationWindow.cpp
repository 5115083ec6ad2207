#include "shell/OutputConfigurationWindow.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QPointer>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "forms/OutputConfigurationForm.h"
#include "shell/FormBuilder.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

namespace {

constexpr int kColumns = 3;

// ListOutputs on a QTreeWidget, both ways, as WidgetBinding binds a QListWidget: the rows follow
// the model's items and selection, and a hand on a row selects that item in the model. The model
// does not tell this binding of its own writes, and writes into the tree do not travel back.
class OutputListBinding final : public QObject {
 public:
  OutputListBinding(ControlModel& model, ControlHandle control, QTreeWidget* tree)
      : QObject(tree), model_(model), control_(control), tree_(tree) {
    listener_ = model_.Observe(control_, [this](const ControlEvent& e) {
      Show(e.change == ChangeKind::Items || e.change == ChangeKind::Properties);
    });
    Show(true);
    connect(tree, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
      if (showing_ || item == nullptr || !tree_) return;
      model_.SelectItem(control_, tree_->indexOfTopLevelItem(item) + 1, Origin::Widget, listener_);
    });
  }
  ~OutputListBinding() override { model_.Disconnect(control_, listener_); }

 private:
  void Show(bool items) {
    const Control* c = control_.get();
    QTreeWidget* tree = tree_;
    if (c == nullptr || tree == nullptr) return;
    showing_ = true;
    const QSignalBlocker block(tree);
    if (items) {
      tree->setEnabled(c->Enabled);
      tree->clear();
      for (const ListItem& item : c->ListItems) {
        QStringList fields = QString::fromStdString(item.Text).split(QLatin1Char('\t'));
        while (fields.size() > kColumns) fields.removeLast();
        tree->addTopLevelItem(new QTreeWidgetItem(fields));
      }
    }
    QTreeWidgetItem* current = tree->topLevelItem(c->SelectedItem - 1);
    tree->setCurrentItem(current);
    if (current == nullptr) tree->clearSelection();
    showing_ = false;
  }

  ControlModel& model_;
  ControlHandle control_;
  QPointer<QTreeWidget> tree_;
  ListenerId listener_ = 0;
  bool showing_ = false;
};

}  // namespace

OutputConfigurationWindow::OutputConfigurationWindow(OutputConfigurationForm& form, QWidget* parent)
    : QWidget(parent) {
  setObjectName(ToQString(OutputConfigurationForm::kFormName));
  setWindowTitle(tr("Output Configuration"));
  ControlModel& model = form.Model();
  const auto& c = form.Controls();
  auto* layout = new QVBoxLayout(this);
  outputs_ = new QTreeWidget(this);
  outputs_->setObjectName(QStringLiteral("ListOutputs"));
  outputs_->setColumnCount(kColumns);
  // The first two rows of the list are its own heading.
  outputs_->setHeaderHidden(true);
  outputs_->setRootIsDecorated(false);
  outputs_->setSelectionMode(QAbstractItemView::SingleSelection);
  outputs_->header()->setStretchLastSection(false);
  outputs_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  outputs_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
  outputs_->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
  new OutputListBinding(model, c.ListOutputs, outputs_);
  layout->addWidget(outputs_, 1);

  FormBuilder b(model);
  layout->addLayout(b.Rows(this, {
      Field::Line({c.cmdX, c.cmdY, c.cmdReset}),
      Field::Line({c.cboOutputCount, Field::Stretch(), c.chkIdentify}),
  }));
}

}  // namespace lumivane
