// The audio window and the audio settings dialog on the offscreen platform.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include "../audio/AudioWorld.h"
#include "audio/AudioSettingsForm.h"
#include "support/QtTestApp.h"
#include "ui/AudioViews.h"

using namespace tlx;
using namespace tlx::test;

namespace {
QPushButton* buttonNamed(QWidget& w, const QString& text) {
    for (auto* b : w.findChildren<QPushButton*>())
        if (b->text() == text) return b;
    return nullptr;
}

struct ViewWorld : AudioWorld {
    ViewWorld() : views(c()) {}
    template <class V>
    V* view(const char* name) {
        QCoreApplication::processEvents();  // views redraw once the model's event is over
        auto* v = dynamic_cast<V*>(views.viewOf(name));
        if (v) v->refresh();
        return v;
    }
    ViewManager views;
};
}  // namespace

TEST(AudioViews, WindowShowsTheQueueAndTheSpeakerCompactAndFull) {
    qtApp();
    ViewWorld w;
    w.command("SHOWAUDIO");
    frmAudio& a = *w.c().forms.get<frmAudio>(frmAudio::kName);
    a.cmd_audioRequest_Click();
    for (int k : {4, 7, 2}) w.request(k);
    w.select(7);
    a.cmd_startAudio_Click();
    w.scheduler.advance(2200);
    auto* view = w.view<AudioWindowView>(frmAudio::kName);
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(view->isVisible());
    auto* list = view->findChild<QTreeWidget*>();
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->topLevelItemCount(), 3);
    EXPECT_EQ(list->topLevelItem(1)->text(0).toStdString(), "100 300 100 007");
    EXPECT_EQ(list->topLevelItem(1)->text(2).toStdString(), "70%");
    EXPECT_EQ(list->topLevelItem(1)->text(3).toStdString(), "-45dB");
    EXPECT_FALSE(list->isEnabled());  // locked while a keypad speaks
    ASSERT_NE(buttonNamed(*view, "Stop"), nullptr);
    EXPECT_TRUE(buttonNamed(*view, "Stop")->isEnabled());
    EXPECT_FALSE(buttonNamed(*view, "Start")->isEnabled());
    EXPECT_FALSE(buttonNamed(*view, "Start Playthrough")->isVisible());  // compact
    saveScreenshot(*view, "frmAudio-compact");

    a.cmd_fullMode_Click();
    view = w.view<AudioWindowView>(frmAudio::kName);
    EXPECT_TRUE(buttonNamed(*view, "Start Playthrough")->isVisible());
    EXPECT_NE(buttonNamed(*view, "<<"), nullptr);
    const auto png = saveScreenshot(*view, "frmAudio-full");
    EXPECT_GT(std::filesystem::file_size(png), 1000u);

    // The presenter's click on Stop reaches the model.
    QTest::mouseClick(buttonNamed(*view, "Stop"), Qt::LeftButton);
    EXPECT_EQ(a.status, "Ready");
    EXPECT_TRUE(w.station().audioHid.empty());
}

TEST(AudioViews, SettingsDialogInBothStatesAndOkCarriesTheBoxes) {
    qtApp();
    ViewWorld w;
    w.audio().LaunchSettings();
    auto* view = w.view<AudioSettingsView>(frmAudioSettings::kName);
    ASSERT_NE(view, nullptr);
    ASSERT_NE(buttonNamed(*view, ">>"), nullptr);
    const int basicHeight = view->height();
    saveScreenshot(*view, "frmAudioSettings-basic");
    QTest::mouseClick(buttonNamed(*view, ">>"), Qt::LeftButton);
    view = w.view<AudioSettingsView>(frmAudioSettings::kName);
    ASSERT_NE(buttonNamed(*view, "<<"), nullptr);
    EXPECT_GT(view->height(), basicHeight);
    saveScreenshot(*view, "frmAudioSettings-advanced");
    // The first entry box is the talk time.
    QLineEdit* talk = nullptr;
    for (auto* e : view->findChildren<QLineEdit*>())
        if (e->text() == "60") talk = e;
    ASSERT_NE(talk, nullptr);
    talk->setText("75");
    QTest::mouseClick(buttonNamed(*view, "OK"), Qt::LeftButton);
    EXPECT_EQ(w.glo().options.text(section::kAudioOptions, "MAX TALK TIME"), "75");
    EXPECT_EQ(w.c().forms.get<frmAudioSettings>(frmAudioSettings::kName), nullptr);
}
