#include "ui/GuardedForm.h"

#include <functional>
#include <utility>

namespace {

class CGuard {
public:
    explicit CGuard(std::exception_ptr& caught) : m_caught(caught) {}

    template <class Result, class... Arguments>
    void Wrap(std::function<Result(Arguments...)>& function, Result instead) const
    {
        if (!function) return;
        function = [inside = std::move(function), instead, &caught = m_caught](Arguments... arguments) -> Result {
            if (caught) return instead;
            try {
                return inside(arguments...);
            } catch (...) {
                caught = std::current_exception();
                return instead;
            }
        };
    }

    void Wrap(std::function<void()>& function) const
    {
        if (!function) return;
        std::function<bool()> answering = [inside = std::move(function)] { return inside(), true; };
        Wrap(answering, false);
        function = [guarded = std::move(answering)] { (void)guarded(); };
    }

    void Wrap(std::vector<FormControl>& controls) const
    {
        for (FormControl& control : controls) {
            Wrap(control.enabled, false);
            Wrap(control.shown, true);
            Wrap(control.changed);
            std::visit([this](auto& what) { Inside(what); }, control.what);
        }
    }

private:
    void Inside(StaticText& text) const { Wrap(text.current, std::string()); }
    void Inside(ListView& list) const
    {
        Wrap(list.count, std::size_t{0});
        Wrap(list.text, std::string());
        Wrap(list.icon, ListIcon::None);
    }
    void Inside(GridView& grid) const
    {
        if (!grid.pasted) return;
        std::function<bool(const PasteResult&)> answering =
            [inside = std::move(grid.pasted)](const PasteResult& result) { return inside(result), true; };
        Wrap(answering, false);
        grid.pasted = [guarded = std::move(answering)](const PasteResult& result) { (void)guarded(result); };
    }
    void Inside(Button& button) const { Wrap(button.press, FormAnswer::Cancel); }
    void Inside(Group& group) const { Wrap(group.controls); }
    void Inside(Row& row) const { Wrap(row.controls); }
    template <class Other>
    void Inside(Other&) const
    {
    }

    std::exception_ptr& m_caught;
};

}  // namespace

DialogForm GuardedForm(const DialogForm& form, std::exception_ptr& caught)
{
    DialogForm guarded = form;
    const CGuard guard(caught);
    guard.Wrap(guarded.controls);
    guard.Wrap(guarded.buttons);
    guarded.broken = [before = form.broken, &caught] { return caught || (before && before()); };
    return guarded;
}
