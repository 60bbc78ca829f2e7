#include "session/SessionUse.h"

SessionUse::SessionUse(NewsSession& session)
    : Session(session)
    , begun(!session.inUse)
{
    if (begun)
        SetInUse(true);
}

SessionUse::~SessionUse()
{
    if (begun)
        SetInUse(false);
}

void SessionUse::SetInUse(bool inUse)
{
    Session.inUse = inUse;
    frmTamarack& MainForm = Session.MainForm;
    MainForm.cmdRefresh.SetEnabled(!inUse);
    MainForm.cmdRefreshDisk.SetEnabled(!inUse);
    MainForm.cmdFindNow.SetEnabled(!inUse);
    MainForm.mnuFindNow.SetEnabled(!inUse);
    MainForm.SSFrame2.SetEnabled(!inUse);
    Raise(Session.UseChanged, inUse);
}
