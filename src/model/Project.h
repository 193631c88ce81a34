#pragma once
// The document: a project's sheets, record tables, spine and backgrounds,
// its file name and modified flag. Views read it through the const
// accessors and change it only through the mutation functions, which tell
// them through the signals. Widget-free.
#include "model/ObjectRef.h"
#include "model/Records.h"
#include <QObject>
#include <QString>
#include <array>

namespace jk {

// Capacities of the record tables at the three moments they are created.
enum class TableSizing { StartUp, NewProject, OpenProject };

struct SpineFont {
    QString name;
    i32 backColor = 16777215, foreColor = 0;
    bool underline = false, italic = false, bold = false, strikethru = false;
    i32 size = 8;
};

// Everything a project file holds, and the state of its fields, as plain
// values: the reader fills one and hands it to Project::load().
struct ProjectData {
    QString fileName;    // the project file, as the title shows it
    QString filePath;
    bool modified = false;
    i16 sheetComposition = 0;  // sum of the format codes of the open sheets
    i16 printWeights = 0;      // sum of their print weights
    QString spineTitle, spineText, spineNumberText;
    SpineFont spineFont;
    bool spinesHidden = false;
    i16 currentNumber = 1;

    RecordTable<TextRecord> freeText;
    RecordTable<TextRecord> pageText;
    RecordTable<CharFieldRecord> charFields;
    RecordTable<NumFieldRecord> numFields;
    RecordTable<PictureRecord> pictures;
    std::array<BackgroundRecord, 17> backgrounds{};  // by format code 1..16

    // Re-creates the record tables with the capacities of that moment.
    void createTables(TableSizing when);
    // The text table of a text object (free or text page).
    const RecordTable<TextRecord>& texts(bool page) const { return page ? pageText : freeText; }
    RecordTable<TextRecord>& texts(bool page) { return page ? pageText : freeText; }
};

// Empty spine parts become a single blank; the spine title becomes the
// spine text, a blank and the spine number text. Returns that line.
QString propagateSpine(ProjectData& d);

class Project : public QObject {
    Q_OBJECT
public:
    explicit Project(QObject* parent = nullptr);

    const ProjectData& data() const { return d_; }
    const RecordTable<TextRecord>& freeText() const { return d_.freeText; }
    const RecordTable<TextRecord>& pageText() const { return d_.pageText; }
    const RecordTable<CharFieldRecord>& charFields() const { return d_.charFields; }
    const RecordTable<NumFieldRecord>& numFields() const { return d_.numFields; }
    const RecordTable<PictureRecord>& pictures() const { return d_.pictures; }
    const BackgroundRecord& background(int code) const;
    const QString& fileName() const { return d_.fileName; }
    const QString& filePath() const { return d_.filePath; }
    bool isModified() const { return d_.modified; }
    i16 sheetComposition() const { return d_.sheetComposition; }
    i16 printWeights() const { return d_.printWeights; }
    const QString& spineText() const { return d_.spineText; }
    const QString& spineNumberText() const { return d_.spineNumberText; }
    const QString& spineTitle() const { return d_.spineTitle; }
    const SpineFont& spineFont() const { return d_.spineFont; }
    bool spinesHidden() const { return d_.spinesHidden; }
    i16 currentNumber() const { return d_.currentNumber; }

    // True when the record of the object exists, belongs to the sheet of
    // this format code and is not deleted.
    bool exists(int sheetCode, ObjectRef r) const;
    // The text style of a text object or field; null for pictures and for
    // indexes outside their table.
    const TextStyle* style(ObjectRef r) const;

    // ---- Whole project
    // Empties the project (spine, numbers, print weights, modified flag)
    // and re-creates the tables with the capacities of that moment.
    void reset(TableSizing when);
    // Replaces the whole document, as a reader made it.
    void load(ProjectData d);
    void setFileName(const QString& name);
    void setFilePath(const QString& path);
    void setModified(bool modified);
    void setSheetComposition(int value);
    void setPrintWeights(int value);
    void setCurrentNumber(int value);
    // What saving does to the records: the spine title takes the spine
    // text, text blocks above or left of the canvas come back to its edge.
    void prepareForSave();

    // ---- Spine and backgrounds
    void setSpineText(const QString& text);
    void setSpineNumberText(const QString& text);
    void setSpineFont(const SpineFont& font);
    void setSpinesHidden(bool hidden);
    void setBackground(int code, const QString& text);
    // Gives every open sheet's spines the spine text, a blank and the spine
    // number text; empty parts become a single blank.
    void propagateSpine();

    // ---- Objects. An add takes the table's next slot (slots are never
    // reused) and returns it, or 0 with nothing changed when it is full.
    int addText(bool page, const TextRecord& r);
    int addPicture(const PictureRecord& r);
    int addCharField(const CharFieldRecord& r);
    int addNumField(const NumFieldRecord& r);
    void setText(bool page, int index, const TextRecord& r);
    void setPicture(int index, const PictureRecord& r);
    void setCharField(int index, const CharFieldRecord& r);
    void setNumField(int index, const NumFieldRecord& r);
    void setStyle(ObjectRef ref, const TextStyle& s);
    // Position and size of any object in its own twips.
    void setGeometry(ObjectRef ref, i16 left, i16 top, i16 width, i16 height);
    // Frees the slot: the mark of a deleted object stays in the table.
    void remove(ObjectRef ref);

    // ---- What fields show now (stepping; not saved)
    void setNumFieldShown(int index, const QString& text);
    void setCharFieldShown(int index, const QString& text);

signals:
    // An object's record changed (or the object went).
    void objectChanged(jk::ObjectRef ref);
    // A field shows another text.
    void fieldShownChanged(jk::ObjectRef ref);
    // The spine or a background changed: code 0 for every sheet.
    void sheetChanged(int code);
    void modifiedChanged(bool modified);
    // The line every spine shows now.
    void spinePropagated(const QString& line);
    // The whole document was replaced or emptied.
    void reloaded();

private:
    ProjectData d_;
};

}  // namespace jk
