// Pages of the preferences dialog and the preference file: the order in which the host calls
// a page, the dialog's buttons, and a file that can't be used.

#include "oxTestSupport.h"

#include "oxFile.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxPreferences.h"
#include "oxPreferencesDialog.h"

#include <QDialogButtonBox>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>

#include <cstdio>
#include <string>
#include <vector>

namespace {

// A page of one number that records what the host asks of it.
class CountingPage : public oxPreferences {
public:
    CountingPage() : oxPreferences(QStringLiteral("Counting"), QStringLiteral("A test page"))
    {
        m_box = new QSpinBox;
        m_box->setRange(0, 1000);
        addPreferencesGUI(m_box);
    }
    ~CountingPage() override
    {
        subPreferencesGUI(m_box);
        delete m_box;
    }
    void setPreferenceDefaults(oxMessage& data, bool overwrite) override
    {
        calls.push_back(overwrite ? "defaults!" : "defaults");
        data.set(kKey, 7, overwrite);
    }
    void applyPreferences() override
    {
        calls.push_back(isChanged(kKey) ? "apply changed" : "apply unchanged");
    }
    void preferencesToWidgets() override
    {
        calls.push_back("show");
        int value = 0;
        getData().get(kKey, value);
        m_box->setValue(value);
    }
    void widgetsToPreferences() override
    {
        calls.push_back("read");
        int stored = 0;
        if (getData().get(kKey, stored) && stored == m_box->value())
            addUnchanged(kKey);
        else
            getData().set(kKey, m_box->value());
    }
    void preferencesLoaded(oxMessage&) override { calls.push_back("loaded"); }

    static constexpr const char* kKey = "Counting value";
    QSpinBox* m_box;
    std::vector<std::string> calls;
};

class PreferencePagesTest : public oxTest {
protected:
    void SetUp() override
    {
        m_oldDir = oxPreferences::getPreferencesDir();
        m_oldData = oxPreferences::getData();
        oxPreferences::setPreferencesDir(m_dir.path());
        oxPreferences::getData().clear();
    }
    void TearDown() override
    {
        oxPreferences::getData() = m_oldData;
        oxPreferences::setPreferencesDir(m_oldDir);
        oxTest::TearDown();
    }
    static int value()
    {
        int stored = -1;
        oxPreferences::getData().get(CountingPage::kKey, stored);
        return stored;
    }

    oxTempDir m_dir;

private:
    std::string m_oldDir;
    oxMessage m_oldData;
};

TEST_F(PreferencePagesTest, DialogConfirmsAppliesAndSavesOnlyOnOkOrApply)
{
    CountingPage page;
    EXPECT_EQ(value(), 7) << "the page's default is in the store once it is up";
    {
        oxPreferencesDialog dialog;
        ASSERT_EQ(dialog.pageList()->count(), 1);
        EXPECT_EQ(dialog.pageList()->item(0)->text(), QStringLiteral("Counting"));
        page.m_box->setValue(42);
        dialog.buttons()->button(QDialogButtonBox::Cancel)->click();
    }
    EXPECT_EQ(value(), 7) << "cancel keeps the store";
    EXPECT_FALSE(oxFile::exists(oxPreferences::getPreferencesFile(), true));

    page.calls.clear();
    {
        oxPreferencesDialog dialog;
        dialog.buttons()->button(QDialogButtonBox::Apply)->click(); // nothing changed
        page.m_box->setValue(42);
        dialog.buttons()->button(QDialogButtonBox::Ok)->click();
    }
    EXPECT_EQ(page.calls, (std::vector<std::string>{"show", "read", "apply unchanged", "read",
                                                    "apply changed"}));
    EXPECT_EQ(page.m_box->parent(), nullptr) << "the widget went back to its page";

    // What OK saved is what the next start reads, with the page told.
    oxPreferences::getData().clear();
    page.calls.clear();
    ASSERT_TRUE(oxPreferences::load());
    EXPECT_EQ(value(), 42);
    // The page's defaults are asked for twice: first into a copy that the file's value types
    // are checked against, then to fill in what the file lacks.
    EXPECT_EQ(page.calls, (std::vector<std::string>{"defaults!", "defaults", "loaded"}));
}

TEST_F(PreferencePagesTest, UnusableFileIsKeptAsBadAndReplacedByDefaults)
{
    CountingPage page;
    const std::string file = oxPreferences::getPreferencesFile();
    struct Case {
        const char* what;
        std::string content;
        std::string reason; // empty: oxMessageRW's own
    };
    std::string newer;
    {
        oxMessage message;
        message.set(CountingPage::kKey, 99);
        message.addAttribute(oxPreferences::fileVersionAttribute, "2");
        ASSERT_TRUE(oxMessageRW::write(message, newer));
    }
    const Case cases[] = {
        {"damaged", "<oxMessage", ""},
        {"newer", newer,
         "it was written by a newer version (preferences version 2, this one reads up to 1)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        oxPreferences::getData().set(CountingPage::kKey, 500);
        ASSERT_TRUE(oxFile::writeAtomically(file, c.content));
        EXPECT_FALSE(oxPreferences::load());
        const std::string reason = c.reason.empty() ? oxMessageRW::lastError() : c.reason;
        expectLog(oxLog::Error, "Preferences: '" + file + "' can't be read (" + reason +
                                    "); it was kept as '" + file +
                                    ".bad' and the defaults are used");
        EXPECT_EQ(oxReadFile(file + ".bad"), c.content);
        EXPECT_FALSE(oxFile::exists(file, true));
        EXPECT_EQ(value(), 7) << "the defaults, not the file nor what was in memory";
        // Said once: the next start finds no file and says nothing.
        EXPECT_TRUE(oxPreferences::load());
        EXPECT_EQ(value(), 7);
        std::remove((file + ".bad").c_str());
    }
    // The next save writes a good file again, which reads back.
    ASSERT_TRUE(oxPreferences::save());
    EXPECT_TRUE(oxPreferences::load());
}

} // namespace
