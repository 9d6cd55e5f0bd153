#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <variant>
#include <vector>

// A dialog as data: what it shows, which field each control is bound to, and what happens when something is pressed.
//
// All texts are UTF-8; "&" stands before the letter that is pressed with Alt. Pointers and functions refer to the
// dialog that describes itself, which lives longer than the form. Whoever shows a form keeps this order: before a
// function is called the controls' contents are put into the fields; afterwards the controls show the fields again,
// and what is enabled, shown or said by a function is asked anew.

class CGridRows;
struct PasteResult;

/// What becomes of a dialog after a button was pressed.
enum class FormAnswer { StayOpen, Confirm, Cancel };

struct StaticText {
    std::string text;
    bool bold = false;
    std::function<std::string()> current = {};  ///< asked instead of `text` when there is one
};

struct CheckBox {
    std::string label;
    bool* value;
};

struct TextField {
    std::string label;  ///< may be empty when another control in front of it says what it is; then `name` is given
    std::string* value;
    bool secret = false;  ///< masked, with a button to look at it
    int lines = 1;        ///< more than one: line ends are LF in the field
    int width = 40;       ///< in characters; the least that is shown
    bool readOnly = false;
    std::string name = {};  ///< for screen readers
};

/// One row of several: a list that drops down, or one round button for each row.
struct Choice {
    std::string label;
    std::vector<std::string> rows;
    int* row;  ///< from 0; -1: none
    bool asButtons = false;
    std::string name = {};  ///< for screen readers, where there is no label
};

enum class ListIcon { None, Error, Warning };

struct ListColumn {
    std::string title;
    int width = 0;  ///< in characters; 0: what the others leave
};

/// Rows are asked for when they come into sight, so there may be very many.
struct ListView {
    std::string name;  ///< for screen readers
    std::vector<ListColumn> columns;
    std::function<std::size_t()> count;
    std::function<std::string(std::size_t row, std::size_t column)> text;
    std::vector<std::size_t>* selected = nullptr;  ///< ascending; null: nothing can be selected
    bool several = false;                          ///< more than one row may be selected
    std::function<ListIcon(std::size_t row)> icon = {};
    std::string activates = {};  ///< the id of the button that a double click or Enter presses
    int lines = 10;
    int width = 60;  ///< in characters; the least that is shown
};

struct TreeNode {
    std::string label;
    std::vector<std::string> leaves;
};

/// A tree of two levels.
struct TreeView {
    std::string name;  ///< for screen readers
    std::vector<TreeNode> nodes;
    int* selected;  ///< counted from top to bottom with all nodes open, from 0; -1: none
    std::string activates = {};
    int lines = 15;
};

/// Cells in rows and columns, to be edited where they stand, with the keys of spreadsheets; a click on a heading, or
/// Alt and the arrow down, sorts. Changed cells are marked. Every edit, also one that is under way when something is
/// pressed, is in the model before a function is called.
struct GridView {
    std::string name;  ///< for screen readers
    CGridRows* rows;
    std::string finds = {};  ///< the id of the button that Ctrl+F presses
    std::function<void(const PasteResult&)> pasted = {};
    int lines = 20;
    int width = 100;  ///< in characters; the least that is shown
};

enum class ButtonRole {
    Plain,
    Default,  ///< Enter presses it
    Cancel    ///< Escape and closing the window press it
};

struct Button {
    std::string label;
    std::function<FormAnswer()> press;
    ButtonRole role = ButtonRole::Plain;
};

struct FormControl;

/// Controls one below the other, in a frame when there is a title. Texts in front of fields stand in one column.
struct Group {
    std::string title;
    std::vector<FormControl> controls;
};

/// Controls side by side.
struct Row {
    std::vector<FormControl> controls;
};

struct FormControl {
    std::variant<StaticText, CheckBox, TextField, Choice, ListView, TreeView, GridView, Button, Group, Row> what;
    std::string id = {};                 ///< names the control inside its form; may be empty
    std::function<bool()> enabled = {};  ///< none: always
    std::function<bool()> shown = {};    ///< none: always
    std::function<void()> changed = {};  ///< called after the user has changed the content
    bool grows = false;                  ///< takes the room that a larger dialog has
};

/// A dialog. Not just "Form": a library that a host may be linked with has a class of that name.
struct DialogForm {
    std::string title;
    std::vector<FormControl> controls = {};  ///< from top to bottom, which is also the order of the tab key
    std::vector<FormControl> buttons = {};   ///< in the last row
    std::string focus = {};                  ///< the id of the control that has the focus first
    std::function<bool()> broken = {};       ///< asked after each function; true ends the form at once, as cancelled
};
