#include "shell/FormBuilder.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpacerItem>

#include "shell/WidgetBinding.h"

namespace lumivane {

namespace {

constexpr int kColumns = 3;  // caption, widget, value

// Shows a control on a widget that is not its own (a row's caption, a slider's value), whoever
// changes it, for as long as that widget lives.
class Follower final : public QObject {
 public:
  Follower(ControlModel& model, ControlHandle control, QLabel* label, std::function<void(QLabel&, const Control&)> show)
      : QObject(label), model_(model), control_(control), label_(label), show_(std::move(show)) {
    listener_ = model_.Observe(control_, [this](const ControlEvent&) { Show(); });
    Show();
  }
  ~Follower() override { model_.Disconnect(control_, listener_); }

 private:
  void Show() {
    const Control* c = control_.get();
    if (c == nullptr || !label_) return;
    show_(*label_, *c);
    label_->setEnabled(c->Enabled);
    label_->setVisible(c->Visible);
  }

  ControlModel& model_;
  ControlHandle control_;
  QPointer<QLabel> label_;
  std::function<void(QLabel&, const Control&)> show_;
  ListenerId listener_ = 0;
};

// Kinds whose widget shows the caption itself.
bool CaptionsItself(ControlKind kind) {
  switch (kind) {
    case ControlKind::CheckBox:
    case ControlKind::CommandButton:
    case ControlKind::OptionButton:
    case ControlKind::Label:
    case ControlKind::Frame: return true;
    default: return false;
  }
}

void Adopt(QWidget* widget, QWidget* owner) {
  if (widget->parentWidget() != owner) widget->setParent(owner);
}

QSpacerItem* Room() { return new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Expanding); }

}  // namespace

ColourSwatch::ColourSwatch(ControlModel& model, ControlHandle control, QWidget* parent)
    : QFrame(parent), model_(model), control_(control) {
  setFrameShape(QFrame::Box);
  setFixedSize(48, 20);
  setCursor(Qt::PointingHandCursor);
  PickColour = [this](const QColor& current) { return QColorDialog::getColor(current, this); };
  WidgetBinding::Bind(model, control, this);
}

void ColourSwatch::mousePressEvent(QMouseEvent*) {
  if (!PickColour || !control_) return;
  const QColor picked = PickColour(ToQColor(ControlModel::BackColor(control_)));
  if (picked.isValid()) model_.SetBackColor(control_, ToProgramColor(picked), Origin::Widget);
}

Field Field::Line(std::initializer_list<Field> fields) {
  Field f(Type::Line);
  f.fields_.assign(fields);
  return f;
}

Field Field::Group(const QString& title, std::initializer_list<Field> rows) {
  Field f(Type::Group);
  f.title_ = title;
  f.fields_.assign(rows);
  return f;
}

Field Field::Group(ControlHandle frame, std::initializer_list<Field> rows) {
  Field f(Type::Group);
  f.control_ = frame;
  f.fields_.assign(rows);
  return f;
}

Field Field::Stretch() { return Field(Type::Stretch); }

QWidget* FormBuilder::Make(ControlHandle control, QWidget* parent, Look look) {
  const Control* c = control.get();
  if (c == nullptr) return nullptr;
  look = look | defaults_;
  QWidget* w = nullptr;
  switch (c->Kind) {
    case ControlKind::Slider: w = new QSlider(Qt::Horizontal, parent); break;
    case ControlKind::ComboBox: {
      auto* combo = new QComboBox(parent);
      if (Has(look, Look::Editable)) {
        combo->setEditable(true);
        // The list is the control's items; what is typed is the control's text, not a new item.
        combo->setInsertPolicy(QComboBox::NoInsert);
      }
      w = combo;
      break;
    }
    case ControlKind::CheckBox: w = new QCheckBox(parent); break;
    case ControlKind::CommandButton: w = new QPushButton(parent); break;
    case ControlKind::Label: {
      auto* label = new QLabel(parent);
      label->setWordWrap(true);  // file names, mostly
      w = label;
      break;
    }
    case ControlKind::PictureBox: w = new ColourSwatch(model_, control, parent); break;
    case ControlKind::ListView: w = new QListWidget(parent); break;
    case ControlKind::TextBox:
      if (Has(look, Look::Lines)) {
        auto* edit = new QPlainTextEdit(parent);
        edit->setReadOnly(Has(look, Look::ReadOnly));
        w = edit;
      } else {
        auto* line = new QLineEdit(parent);
        line->setReadOnly(Has(look, Look::ReadOnly));
        w = line;
      }
      break;
    case ControlKind::OptionButton: w = new QRadioButton(parent); break;
    case ControlKind::Frame: w = new QGroupBox(parent); break;
  }
  if (c->Kind != ControlKind::PictureBox) WidgetBinding::Bind(model_, control, w);  // the swatch binds itself
  made_.emplace_back(control, w);
  return w;
}

QWidget* FormBuilder::MadeWidget(ControlHandle control) const {
  for (auto it = made_.rbegin(); it != made_.rend(); ++it)
    if (it->first == control) return it->second;
  return nullptr;
}

QLabel* FormBuilder::CaptionFor(ControlHandle control, QWidget* owner, QWidget* buddy) {
  const Control* c = control.get();
  if (c == nullptr || c->Caption.empty()) return nullptr;
  auto* label = new QLabel(owner);
  label->setObjectName(ToQString(c->StoredName) + QStringLiteral("Caption"));
  label->setBuddy(buddy);
  new Follower(model_, control, label, [](QLabel& l, const Control& shown) { l.setText(ToQString(shown.Caption)); });
  return label;
}

QLabel* FormBuilder::ValueFor(ControlHandle control, QWidget* owner) {
  auto* value = new QLabel(owner);
  value->setObjectName(ToQString(control->StoredName) + QStringLiteral("Value"));
  value->setMinimumWidth(value->fontMetrics().horizontalAdvance(QStringLiteral("-00000")));
  value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  new Follower(model_, control, value, [](QLabel& l, const Control& shown) { l.setNum(shown.Value); });
  return value;
}

QGridLayout* FormBuilder::Rows(QWidget* owner, std::initializer_list<Field> rows) {
  auto* grid = new QGridLayout;
  AddRows(grid, owner, std::vector<Field>(rows));
  return grid;
}

QHBoxLayout* FormBuilder::Line(QWidget* owner, std::initializer_list<Field> fields) {
  return MakeLine(owner, std::vector<Field>(fields));
}

QWidget* FormBuilder::Page(QWidget* parent, std::initializer_list<Field> rows) {
  auto* page = new QWidget(parent);
  auto* grid = new QGridLayout(page);
  const int end = AddRows(grid, page, std::vector<Field>(rows));
  grid->addItem(Room(), end, 0, 1, kColumns);
  return page;
}

int FormBuilder::AddRows(QGridLayout* grid, QWidget* owner, const std::vector<Field>& rows) {
  // An empty grid counts one row: the rows are counted here.
  int row = 0;
  for (const Field& field : rows) AddRow(grid, row++, owner, field);
  grid->setColumnStretch(1, 1);
  return row;
}

void FormBuilder::AddRow(QGridLayout* grid, int row, QWidget* owner, const Field& field) {
  switch (field.type_) {
    case Field::Type::Own:
      if (field.own_ == nullptr) return;
      Adopt(field.own_, owner);
      grid->addWidget(field.own_, row, 0, 1, kColumns);
      return;
    case Field::Type::Line: grid->addLayout(MakeLine(owner, field.fields_), row, 0, 1, kColumns); return;
    case Field::Type::Group:
      if (QWidget* box = MakeGroup(owner, field)) grid->addWidget(box, row, 0, 1, kColumns);
      return;
    case Field::Type::Stretch: grid->addItem(Room(), row, 0, 1, kColumns); return;
    case Field::Type::Control: break;
  }
  QWidget* w = Make(field.control_, owner, field.look_);
  if (w == nullptr) return;
  const ControlKind kind = field.control_->Kind;
  const Look look = field.look_ | defaults_;
  QLabel* caption = CaptionsItself(kind) ? nullptr : CaptionFor(field.control_, owner, w);
  // Without a caption the widget takes the caption's column as well, unless it stands indented.
  const int column = caption != nullptr || Has(look, Look::Indented) ? 1 : 0;
  if (caption != nullptr) grid->addWidget(caption, row, 0);
  const bool lines = kind == ControlKind::TextBox && Has(look, Look::Lines);
  if (lines) {
    // A text of several lines takes the page's spare height; its caption stays at its top.
    if (caption != nullptr) grid->setAlignment(caption, Qt::AlignTop);
    grid->setRowStretch(row, 1);
  }
  if (kind == ControlKind::Slider && !Has(look, Look::NoValue)) {
    grid->addWidget(w, row, column, 1, 2 - column);
    grid->addWidget(ValueFor(field.control_, owner), row, 2);
  } else if (kind == ControlKind::PictureBox) {
    grid->addWidget(w, row, column, Qt::AlignLeft);
  } else {
    grid->addWidget(w, row, column, 1, kColumns - column);
  }
}

QHBoxLayout* FormBuilder::MakeLine(QWidget* owner, const std::vector<Field>& fields) {
  auto* line = new QHBoxLayout;
  for (const Field& field : fields) AddToLine(line, owner, field);
  return line;
}

void FormBuilder::AddToLine(QHBoxLayout* line, QWidget* owner, const Field& field) {
  switch (field.type_) {
    case Field::Type::Own:
      if (field.own_ == nullptr) return;
      Adopt(field.own_, owner);
      line->addWidget(field.own_);
      return;
    case Field::Type::Line: line->addLayout(MakeLine(owner, field.fields_)); return;
    case Field::Type::Group:
      if (QWidget* box = MakeGroup(owner, field)) line->addWidget(box);
      return;
    case Field::Type::Stretch: line->addStretch(); return;
    case Field::Type::Control: break;
  }
  QWidget* w = Make(field.control_, owner, field.look_);
  if (w == nullptr) return;
  const ControlKind kind = field.control_->Kind;
  if (!CaptionsItself(kind))
    if (QLabel* caption = CaptionFor(field.control_, owner, w)) line->addWidget(caption);
  line->addWidget(w, kind == ControlKind::Label ? 1 : 0);
  if (kind == ControlKind::Slider) line->addWidget(ValueFor(field.control_, owner));
}

QWidget* FormBuilder::MakeGroup(QWidget* owner, const Field& group) {
  QGroupBox* box = nullptr;
  if (group.control_) {
    if (group.control_->Kind != ControlKind::Frame) return nullptr;
    box = qobject_cast<QGroupBox*>(Make(group.control_, owner));
  } else {
    box = new QGroupBox(group.title_, owner);
  }
  AddRows(new QGridLayout(box), box, group.fields_);
  return box;
}

}  // namespace lumivane
