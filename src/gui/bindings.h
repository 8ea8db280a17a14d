#pragma once
// Keeps a widget in step with its control: enabled, visible, caption or
// value, and hands the user's input back to the control.

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAction>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QGroupBox>

#include "core/ui/control.h"

namespace velaro::gui {

QString uiText(const std::string& utf8);

void bindButton(ui::CommandButton& c, QAbstractButton* w);
void bindCheck(ui::CheckBox& c, QAbstractButton* w);
void bindOption(ui::OptionButton& c, QAbstractButton* w);
void bindSlider(ui::Slider& c, QAbstractSlider* w);
void bindScroll(ui::ScrollBar& c, QAbstractSlider* w);
void bindLabel(ui::Control& c, QLabel* w);
void bindFrame(ui::Frame& c, QGroupBox* w);
void bindText(ui::TextBox& c, QPlainTextEdit* w);
void bindList(ui::ListBox& c, QListWidget* w);
void bindMenu(ui::Menu& c, QAction* a);

}  // namespace velaro::gui
