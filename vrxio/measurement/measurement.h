// Samples as instruments measured them, whatever the form of the file: their names, their values at the wavelengths of
// the instrument, and the conditions of the measurement.

#ifndef VRXIO_MEASUREMENT_MEASUREMENT_H_
#define VRXIO_MEASUREMENT_MEASUREMENT_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/measurement/names.h>

namespace vrx::io {

/// The specular component of a sphere geometry.
enum class Specular : uint8_t { kUnknown, kIncluded, kExcluded };

/// How samples were measured, as far as a file says.
struct MeasuringConditions {
  int32_t geometry = kNoGeometry;  ///< the library's angle code
  std::string otherGeometry;       ///< the words of the file for a geometry that nothing is known of
  Specular specular = Specular::kUnknown;
  int32_t mCondition = -1;  ///< 0 to 3 for M0 to M3 of ISO 13655; -1 when unknown
  char ultraviolet = 0;     ///< the fourth letter of a condition code; 0 when unknown
  std::string filter;       ///< the words of the file for its filter
  std::string backing;      ///< "black", "white" ...
  std::string instrument;
  std::string aperture;
  std::string date;             ///< of the whole set
  int32_t illuminant = -1;      ///< of colour values; -1 when unknown
  int32_t observer = -1;        ///< of colour values, 0 or 1; -1 when unknown
  std::string otherIlluminant;  ///< the words of the file for an illuminant of which there is no table

  bool operator==(const MeasuringConditions&) const = default;
};

/// The condition code, such as "CREG": calibrated, reflectance, the specular component, ultraviolet; ConditionText
/// describes it. Cut off where nothing is known any more; empty when not even the specular component is.
std::string ConditionCode(const MeasuringConditions& conditions);

/// What a geometry says of the gloss: SCI and SCE of any light say it; 45/0, 0/45 and the aspecular angles lie beside the direction
/// in which a smooth surface reflects, and leave it out as SCE does. Unknown of any other, 0 degrees among them.
Specular SpecularOfGeometry(int32_t geometry);
/// Whether a geometry leaves out the gloss by its angles. What a matt surface reflects to all sides is in such curves, too.
bool IsBesideGloss(int32_t geometry);

/// Takes what a sample's geometry says into its conditions: the angles, the specular component, or one of M0 to M3. `geometry` is an
/// angle code of the library; one below 0, such as kNoGeometry, says nothing.
void TakeGeometry(int32_t geometry, MeasuringConditions& conditions);
/// Takes out of the conditions what a sample's geometry says in their place: the angles always, the specular component where it
/// is SCI or SCE, the light where it is one of M0 to M3.
void LeaveToGeometry(int32_t geometry, MeasuringConditions& conditions);

/// The conditions in which two sets contradict each other: "geometry 45/0 and SCI", "M0 and M2"; empty when nothing that
/// both know does. Instruments and dates may differ.
std::string ConditionConflict(const MeasuringConditions& a, const MeasuringConditions& b);

/// What is known of the light under which colours were seen: "D50 at 2 degrees", "2 degrees".
std::string LightText(const MeasuringConditions& conditions);

/// Takes up the light that a remark in a heading names, as in "L*(10/D65)", "X [D50, 2 deg]"; anything else is left.
void TakeLightRemark(std::string_view remark, MeasuringConditions& conditions);

/// Why colours that were seen under `stated` do not count under the light `required`, of which -1 says nothing; empty where they do.
std::string LightConflict(const MeasuringConditions& stated, const MeasuringConditions& required);

/// Takes up a fact about a measurement by the word that a file has for it, such as ("GEOMETRY", "45/0") or
/// ("MeasurementCondition", "M1"). False when the word says nothing about the conditions; what is said in words that
/// nothing is known of is kept as text where there is a place for it.
bool TakeCondition(std::string_view word, std::string_view text, MeasuringConditions& conditions);

/// The angle code of a geometry in the many spellings of instruments: what ParseGeometry takes, "45:0", "45/0:c",
/// "d:8", "di:8" (SCI), "de:8" (SCE), "SPIN", "M1_Daylight", "15as" ...; kUnknownGeometry for any other text.
int32_t ParseMeasuringGeometry(std::string_view text);

/// What is to be told of conditions whose geometry is stated in words that nothing is known of, with how to write it; empty where
/// it is known or not stated.
std::string UnknownGeometryWarning(const MeasuringConditions& conditions);

/// The properties that the samples of a file, or of a part of it, have in common.
struct MeasurementLayout {
  std::vector<double> wavelengths;  ///< nm, ascending; empty for colours alone
  MeasuringConditions conditions;
};

/// One sample. Texts, values and the layout live until the next one is read.
struct Measurement {
  std::string_view id;  ///< what names the sample: its id, else its name, else the number of its row, from 1
  std::string_view name;      ///< a second name beside the id
  std::string_view standard;  ///< the id of the standard that it belongs to
  std::string_view date;
  int32_t geometry = kNoGeometry;       ///< where samples of a file differ in it
  std::span<const std::string> extras;  ///< of the columns that ReadOptions::isExtra knows
  std::span<const std::string>
      others;  ///< of the columns that nothing is made of, where ReadOptions::keepsOthers
  std::span<const std::string>
      otherHeadings;                    ///< theirs, which may change from one table of a file to the next
  std::span<const double> reflectance;  ///< percent at the wavelengths of the layout
  bool hasXyz = false;
  bool hasLab = false;
  std::array<double, 3> xyz{};                ///< on the scale Y = 100
  std::array<double, 3> lab{};                ///< L*, a*, b*
  const MeasurementLayout* layout = nullptr;  ///< another one when it changes
};

/// Reads the samples of an open file one by one, in constant memory.
class MeasurementReader {
 public:
  virtual ~MeasurementReader() = default;

  /// Reads the next sample; false after the last one. Throws InputError with file, line and reason.
  virtual bool Next(Measurement& sample) = 0;
  /// The layout of the first sample: known as soon as the file is open.
  virtual const MeasurementLayout& FirstLayout() const = 0;
  /// "CGATS", "CxF3" ...
  virtual std::string_view FormName() const = 0;

  /// True when samples may have an id, a name, a standard, a geometry of their own.
  virtual bool HasIds() const = 0;
  virtual bool HasNames() const = 0;
  virtual bool HasStandards() const { return false; }
  virtual bool HasGeometries() const { return false; }
  /// True when the first sample has tristimulus values.
  virtual bool HasXyz() const = 0;
  /// The headings of the columns whose texts are a sample's extras.
  virtual std::vector<std::string> ExtraHeadings() const { return {}; }

  /// Rows without values, which a lenient reader left out so far.
  virtual int64_t CountUnmeasured() const { return 0; }

  /// The name of the file in messages; its size, 0 for a pipe; and how far it was read.
  virtual const std::string& Name() const = 0;
  virtual uint64_t Size() const = 0;
  virtual uint64_t Position() const = 0;
  /// A bookmark of the sample that was read last, for SeekTo, which makes it the next one. The number that stands for a missing
  /// id goes on counting from there: it is that of the row only where rows are read from the first one on.
  virtual uint64_t Offset() const = 0;
  virtual void SeekTo(uint64_t offset) = 0;
  /// True when SeekTo works.
  virtual bool CanSeek() const = 0;
  /// Goes back to the first sample.
  virtual void Rewind() = 0;
  /// Where the sample that was read last stands, for messages: "f.csv, line 3".
  virtual std::string RowPlace() const = 0;
  /// The same of one of its extras, or of the heading of it.
  virtual std::string ExtraPlace(std::size_t extra) const;
  /// Refuse that sample, and one of its extras.
  [[noreturn]] void FailRow(const std::string& reason) const;
  [[noreturn]] void FailExtra(std::size_t extra, const std::string& reason) const;

  /// The parts of the file that were not used so far, and why: a sentence each.
  const std::vector<std::string>& Notes() const { return notes_; }
  /// What was lost of the file so far, by name: columns, elements, tables that are no part of its samples.
  const std::vector<std::string>& PassedOver() const { return passedOver_; }
  /// Words about the whole file that are no conditions of a measurement, where ReadOptions::keepsOthers: "DESCRIPTOR", "Chart 3".
  struct Remark {
    std::string word, text;
    bool operator==(const Remark&) const = default;
  };
  const std::vector<Remark>& Remarks() const { return remarks_; }

 protected:
  static constexpr std::size_t kMaxNotes = 40;
  static constexpr std::size_t kMaxRemarks = 1000;
  void Note(std::string text);
  void PassOver(std::string name);
  void AddRemark(std::string_view word, std::string_view text);

 private:
  std::vector<std::string> notes_, passedOver_;
  std::vector<Remark> remarks_;
};

/// How a file is to be read.
struct ReadOptions {
  enum class Form { kByContent, kCsv, kCgats, kCxf, kJson };
  enum class Scale { kByFile, kPercent, kFraction };
  enum class Wavelengths { kByContent, kInColumns, kInRows };

  Form form = Form::kByContent;
  /// By the file: what SPECTRAL_NORM or the values say for CGATS, fractions for CxF; CSV and JSON are percent if a unit says so or
  /// a value comes to 2, and a ScaleError otherwise: when the file is opened, of a pipe at its end.
  Scale scale = Scale::kByFile;
  /// Fractions above 2 are refused unless this is set.
  bool force = false;
  /// Unknown columns, rows without values and other deviations are passed over with a note. Where no column is known to have
  /// ids, the first unknown one is taken for them.
  bool lenient = false;
  bool latin1 = false;
  Wavelengths orientation = Wavelengths::kByContent;
  /// The wavelengths of a table without a header: "380-730/10"; empty for files that have one.
  std::string wavelengths;
  /// The headings of a table without a header, "id", "L", "a", "b"; empty for files that have one.
  std::vector<std::string> columns;
  /// The heading of the column whose texts are the ids; empty for the one that the headings tell.
  std::string idColumn;
  /// Columns to pass over, by their headings.
  std::vector<std::string> ignoredColumns;
  /// Columns that nothing is made of (device values, densities, unknown ones that are passed over) and words about the whole
  /// file are kept as texts, for a conversion that loses nothing.
  bool keepsOthers = false;
  /// Knows the headings of columns of the caller's own; null for none.
  bool (*isExtra)(std::string_view heading) = nullptr;
};

/// A range of wavelengths such as "380-730/10", in nm, as a list. Throws InputError, in which `option` says where it stood.
std::vector<double> ParseWavelengthRange(std::string_view text, std::string_view option);

}  // namespace vrx::io

#endif  // VRXIO_MEASUREMENT_MEASUREMENT_H_
