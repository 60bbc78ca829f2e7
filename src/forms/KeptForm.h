#pragma once

#include "platform/Menu.h"

#include <memory>

// The behaviour of a form that is built at its first use and kept when it is closed: one of its handlers may still be
// waiting further down then, and finds its controls there when it goes on. Each opening begins with Form_Load, so that
// the user finds the form as new.
template <class FormType> class KeptForm {
protected:
    ~KeptForm() = default;

    // The form, opened if it is closed. What opens it does not show it.
    FormType& Loaded()
    {
        if (!form) {
            form = std::make_unique<FormType>();
            form->Unload = [this] { Unload(); };
            Bind();
        }
        if (!loaded) {
            loaded = true;
            Form_Load();
        }
        return *form;
    }

    // Whoever lets events through asks again behind that.
    bool IsLoaded() const { return loaded; }

    // Closes the form, if it is open.
    void Unload()
    {
        if (!loaded)
            return;
        Form_Unload();
        loaded = false;
        form->SetVisible(false);
    }

    // What the menu entry does that shows by its mark whether the form is open. Form_Unload takes the mark away.
    void OpenOrClose(MenuEntry& entry)
    {
        if (entry.Checked()) {
            Unload();
        } else {
            entry.SetChecked(true);
            Loaded().SetVisible(true);
        }
    }

    // None before the first use.
    std::unique_ptr<FormType> form;

private:
    // Gives its handlers to the form that has been built.
    virtual void Bind() = 0;
    // These let no events through.
    virtual void Form_Load() = 0;
    virtual void Form_Unload() = 0;

    bool loaded = false;
};
