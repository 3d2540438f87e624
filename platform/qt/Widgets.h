#pragma once

#include <QComboBox>
#include <QLabel>
#include <QToolButton>

namespace platform {

/// A list of which one item is chosen; the interface file asks for it by this name.
class PopUpButton : public QComboBox {
  public:
    using QComboBox::QComboBox;
};

/// An editable text with a list below it, in which only the user selects an item.
class ComboBox : public QComboBox {
  public:
    explicit ComboBox(QWidget* parent = nullptr);

    /// Appends an item; the selection and the text stay.
    void append(const QString& item);

    /// Removes an item; the text stays, and no other item is selected in its place.
    void removeAt(int index);

  private:
    void showText(const QString& text);
};

/// A button that shows its state by its image. Without a border it draws nothing but the image
/// and its label: a sunken frame would say the same a second time, and not in step.
class ImageToggle : public QToolButton {
  public:
    using QToolButton::QToolButton;

  protected:
    void initStyleOption(QStyleOptionToolButton* option) const override;
};

/// A label for the number of a slider. It has room for any, so that a new one moves nothing in the
/// window while the user drags.
class ValueLabel : public QLabel {
  public:
    explicit ValueLabel(QWidget* parent = nullptr);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void makeRoom();
};

}  // namespace platform
