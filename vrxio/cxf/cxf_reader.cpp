#include <vrxio/cxf/cxf_reader.h>

#include <algorithm>
#include <map>
#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

#include <vrxio/cxf/cxf_document.h>
#include <vrxio/cxf/cxf_measuring.h>
#include <vrxio/measurement/sample_columns.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/shown_text.h>
#include <vrxio/text/text.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx::io {
namespace {

using Kind = MarkupWindow::Kind;
using Tag = MarkupWindow::Tag;

// The schema's limits.
constexpr double kLeastFraction = -0.1, kLargestFraction = 3;
constexpr double kFirstStart = 360, kLastStart = 400;  // nm
constexpr std::size_t kMaxValues = 10'000;             // of one spectrum
constexpr std::size_t kMaxMeasurings = 10'000;
constexpr std::size_t kMaxSamplesOfObject = 256;
constexpr std::size_t kMaxTags = 10'000;
constexpr std::size_t kMaxIds = 100'000;  // that are compared with each other

class CxfReader final : public MeasurementReader {
 public:
  CxfReader(InputStream input, const ReadOptions& options) : options_(options), markup_(std::move(input)) {
    if (!options.idColumn.empty()) markup_.Fail(0, "--id-column: the objects have a Name and no columns");
    FindRoot();
    ReadMeasurings();
    CompareMeasurings();
    StartOver();
    FindObjects();
    firstObject_ = markup_.Window().Offset();
    firstLine_ = markup_.Window().Line();
    while (samples_.empty()) {
      if (!ReadObject()) {
        markup_.Fail(0, hasLights_ ? "the file has spectra of lights but no reflectances"
                                   : "the file has neither reflectances nor colours");
      }
    }
    firstLayout_ = samples_.front().layout;
    firstHasXyz_ = samples_.front().xyz.has_value();
    hasStandards_ = !standard_.empty();
    Rewind();
  }

  bool Next(Measurement& sample) override {
    while (next_ == samples_.size()) {
      if (!ReadObject()) return false;
    }
    bookmark_ = objectOffset_ * kMaxSamplesOfObject + next_;
    const Sample& read = samples_[next_++];
    ++rows_;
    sample = Measurement();
    sample.id = id_;
    if (id_.empty()) sample.id = id_ = std::to_string(rows_);
    sample.name = name_;
    sample.standard = StandardOfRow();
    sample.date = read.date.empty() && date_ ? std::string_view(*date_) : std::string_view(read.date);
    sample.geometry = read.geometry;
    sample.layout = read.layout;
    sample.reflectance = std::span(values_).subspan(read.firstValue, read.count);
    sample.others = others_;
    sample.otherHeadings = otherHeadings_;
    sample.hasXyz = read.xyz.has_value();
    sample.hasLab = read.lab.has_value();
    if (read.xyz) sample.xyz = *read.xyz;
    if (read.lab) sample.lab = *read.lab;
    return true;
  }

  const MeasurementLayout& FirstLayout() const override { return *firstLayout_; }
  std::string_view FormName() const override { return "CxF3"; }
  bool HasIds() const override { return true; }
  bool HasNames() const override { return hasNames_; }
  bool HasStandards() const override { return hasStandards_; }
  bool HasGeometries() const override { return geometriesDiffer_; }
  bool HasXyz() const override { return firstHasXyz_; }
  const std::string& Name() const override { return markup_.Window().Input().name; }
  uint64_t Size() const override { return markup_.Window().Input().size; }
  uint64_t Position() const override { return markup_.Window().Offset(); }
  uint64_t Offset() const override { return bookmark_; }
  bool CanSeek() const override { return Size() > 0; }
  void SeekTo(uint64_t offset) override {
    markup_.Window().SeekTo(offset / kMaxSamplesOfObject, 0);
    isEnded_ = comparesIds_ = false;
    ReadObject();
    next_ = static_cast<std::size_t>(offset % kMaxSamplesOfObject);
  }
  void Rewind() override {
    markup_.Window().SeekTo(firstObject_, firstLine_);
    samples_.clear();
    ids_.clear();
    next_ = 0;
    rows_ = 0;
    isEnded_ = false;
  }
  std::string RowPlace() const override { return markup_.PlaceOf(objectLine_); }

 private:
  struct Sample {
    std::string measuring;
    const MeasurementLayout* layout = nullptr;
    int32_t geometry = kNoGeometry;
    std::size_t firstValue = 0, count = 0;
    std::optional<std::array<double, 3>> lab, xyz;
    std::string date;
  };

  // The frame -------------------------------------------------------------------------------------------

  void StartOver() { markup_.Window().SeekTo(0, 1); }

  // The root element, and the prefix of the namespace.
  void FindRoot() {
    const Tag root = markup_.NextTag(0);
    if (root.kind == Kind::kNone) markup_.Fail(1, "the file has no elements");
    const std::string_view bytes = markup_.Bytes();
    const std::string_view tag = bytes.substr(root.begin, root.end - root.begin - 1);
    const std::string_view name = markup_.NameOf(root);
    const std::size_t colon = name.find(':');
    prefix_ = colon == std::string_view::npos ? "" : std::string(name.substr(0, colon + 1));
    const int64_t line = markup_.Window().LineAhead(root.begin);
    if (name.substr(prefix_.size()) != "CxF") {
      markup_.Fail(line, "the root element is " + Shown(name) + ", not CxF");
    }
    std::string space;
    const std::string declaration =
        prefix_.empty() ? "xmlns" : "xmlns:" + prefix_.substr(0, prefix_.size() - 1);
    if (!AttributeOf(tag, declaration, space)) markup_.Fail(line, "the namespace of CxF is not declared");
    if (space != kCxfNamespace) markup_.Fail(line, "the namespace is " + Shown(space) + ", not that of CxF3");
    xml_.SetPrefix(prefix_);
  }

  std::string Prefixed(std::string_view name) const { return prefix_ + std::string(name); }

  // Moves behind the start tag of the first of the elements `name` that lies outside of those passed over. False when there
  // is none.
  bool Enter(std::string_view name) {
    while (true) {
      const Tag tag = markup_.NextTag(0);
      if (tag.kind == Kind::kNone) return false;
      const std::string_view found = markup_.NameOf(tag);
      if (found == Prefixed(name)) {
        markup_.Skip(tag.end);
        return tag.kind == Kind::kStart;
      }
      if (found == Prefixed("FileInformation") && tag.kind == Kind::kStart) {
        ReadFileInformation(tag);
        continue;
      }
      const bool goesInto = found == Prefixed("CxF") || found == Prefixed("Resources");
      if (goesInto || tag.kind == Kind::kEnd) {
        markup_.Skip(tag.end);
      } else {
        markup_.SkipElement(tag);
      }
    }
  }

  // Words about the whole file, in those of CGATS.
  void ReadFileInformation(const Tag& tag) {
    const int64_t line = markup_.Window().LineAhead(tag.begin);
    const std::string_view bytes = markup_.TakeElement(tag);
    if (!xml_.Parse(bytes, markup_.QuotedEnds(), line)) markup_.Fail(line, xml_.Error());
    if (!IsUtf8(bytes)) markup_.Fail(line, "the text is not UTF-8");
    constexpr std::pair<std::string_view, std::string_view> kWords[] = {{"Creator", "ORIGINATOR"},
                                                                        {"CreationDate", "CREATED"},
                                                                        {"Description", "DESCRIPTOR"},
                                                                        {"Comment", "COMMENT"}};
    for (int32_t child = xml_.FirstChild(1); child > 0; child = xml_.NextSibling(child)) {
      const std::string_view name = xml_.Name(child);
      const auto* const known =
          std::ranges::find(kWords, name, &std::pair<std::string_view, std::string_view>::first);
      const std::string text = xml_.Text(child);
      if (known == std::end(kWords)) {
        PassOver(Shown(name));
      } else if (options_.keepsOthers && !text.empty()) {
        AddRemark(known->second, text);
      }
    }
    markup_.Skip(TakenBytes());
  }

  void FindObjects() {
    if (!Enter("ObjectCollection")) markup_.Fail(0, "the file has no ObjectCollection");
  }

  // ColorSpecification elements --------------------------------------------------------------------------------------

  // They follow the objects, so a search for their name goes first: it passes over the objects ten times as fast as a
  // reader of markup.
  void ReadMeasurings() {
    StartOver();
    if (!markup_.Window().SkipTo("<" + Prefixed("ColorSpecificationCollection"))) return;
    const Tag collection = markup_.NextTag(0);
    markup_.Skip(collection.end);
    if (collection.kind != Kind::kStart) return;
    while (true) {
      const Tag tag = markup_.NextTag(0);
      if (tag.kind == Kind::kEnd) break;
      if (tag.kind == Kind::kNone) markup_.Fail(0, "the file ends within the ColorSpecification elements");
      const int64_t line = markup_.Window().LineAhead(tag.begin);
      const std::string_view bytes = markup_.TakeElement(tag);
      if (!xml_.Parse(bytes, markup_.QuotedEnds(), line)) markup_.Fail(line, xml_.Error());
      if (!IsUtf8(bytes)) markup_.Fail(line, "the text is not UTF-8");
      if (xml_.Name(1) == "ColorSpecification") ReadMeasuring(line);
      markup_.Skip(TakenBytes());
    }
    markup_.Skip(markup_.NextTag(0).end);
    PassOverRest();
  }

  // Elements behind them, custom resources above all, are passed over and said so. A file that ends there was cut off.
  void PassOverRest() {
    while (true) {
      const Tag tag = markup_.NextTag(0);
      if (tag.kind == Kind::kNone) markup_.Fail(0, "the file ends within its root element");
      const std::string_view name = markup_.NameOf(tag);
      if (tag.kind == Kind::kEnd) {
        if (name == Prefixed("CxF")) return;
        markup_.Skip(tag.end);
        continue;
      }
      if (name != Prefixed("ObjectCollection")) {
        Note(Shown(name.substr(name.find(':') + 1)) + " is ignored");
        PassOver(Shown(name.substr(name.find(':') + 1)));
      }
      markup_.SkipElement(tag);
    }
  }

  // The bytes of the element that was parsed last.
  std::size_t TakenBytes() const { return xml_.Size(); }

  void ReadMeasuring(int64_t line) {
    if (measurings_.size() == kMaxMeasurings)
      markup_.Fail(line, "more than 10000 ColorSpecification elements");
    std::string id;
    if (!xml_.Attribute(1, "Id", id)) markup_.Fail(line, "a ColorSpecification has no Id");
    Measuring spec = ParseMeasuring(xml_, 1);
    if (xml_.Child(1, "MeasurementSpec") == 0) Deviates(line, "ColorSpecification has no MeasurementSpec");
    if (spec.start != 0 && (spec.start < kFirstStart || spec.start > kLastStart)) {
      Deviates(line, "StartWL is not from 360 to 400");
    }
    const std::string& geometry = spec.conditions.otherGeometry;
    if (options_.keepsOthers && !geometry.empty()) AddRemark("MEASUREMENT_GEOMETRY", geometry);
    if (!measurings_.emplace(id, std::move(spec)).second) {
      markup_.Fail(line, "there are two ColorSpecification elements \"" + Shown(id) + "\"");
    }
  }

  // Whether samples have to be told apart by their geometry, or by their M condition where it is all that differs.
  void CompareMeasurings() {
    bool conditionsDiffer = false;
    for (const auto& [id, spec] : measurings_) {
      const MeasuringConditions& first = measurings_.begin()->second.conditions;
      const bool differs = spec.conditions.geometry != first.geometry || spec.angles.size() > 1;
      geometriesDiffer_ = geometriesDiffer_ || differs;
      conditionsDiffer = conditionsDiffer || spec.conditions.mCondition != first.mCondition;
    }
    onlyConditionsDiffer_ = conditionsDiffer && !geometriesDiffer_;
    geometriesDiffer_ = geometriesDiffer_ || conditionsDiffer;
  }

  // Objects ---------------------------------------------------------------------------------------------

  // Counts a deviation; true for one that is to be told. An element's line is counted from the start of its object, which
  // would take too long for each of many.
  bool IsTold() {
    constexpr int kEnough = 8;
    if (deviations_ > kEnough) return false;
    if (++deviations_ > kEnough) Note("more deviations from the schema");
    return deviations_ <= kEnough;
  }
  void DeviatesAt(int32_t element, const std::string& what) {
    if (IsTold()) NoteDeviation(xml_.Line(element), what);
  }
  void Deviates(int64_t line, const std::string& what) {
    if (IsTold()) NoteDeviation(line, what);
  }
  void NoteDeviation(int64_t line, const std::string& what) {
    const std::string where = line > 0 ? "line " + std::to_string(line) + ": " : std::string();
    Note(where + what + ", against the schema");
  }

  // Reads the next object and its samples, of which there may be none; false when there is none.
  bool ReadObject() {
    samples_.clear();
    values_.clear();
    next_ = 0;
    if (isEnded_) return false;
    const Tag tag = markup_.NextTag(0);
    if (tag.kind == Kind::kNone) markup_.Fail(markup_.Window().Line(), "the file ends within the objects");
    if (tag.kind == Kind::kEnd) return EndObjects(tag);
    objectLine_ = markup_.Window().LineAhead(tag.begin);
    objectOffset_ = markup_.Window().Offset() + tag.begin;
    const std::string_view bytes = markup_.TakeElement(tag);
    if (!xml_.Parse(bytes, markup_.QuotedEnds(), objectLine_)) markup_.Fail(objectLine_, xml_.Error());
    if (!IsUtf8(bytes)) markup_.Fail(objectLine_, "the text is not UTF-8");
    if (xml_.Name(1) == "Object") {
      ReadNames();
      ReadValues(ReadContent());
    }
    markup_.Skip(TakenBytes());
    return true;
  }

  // Goes on from the end of the objects to that of the file, where no more of them may stand. Answers false, as none was read.
  bool EndObjects(const Tag& end) {
    isEnded_ = true;
    markup_.Skip(end.end);
    while (true) {
      const Tag tag = markup_.NextTag(0);
      if (tag.kind == Kind::kNone) markup_.Fail(0, "the file ends within its root element");
      const std::string name(markup_.NameOf(tag));
      if (name == Prefixed("ObjectCollection"))
        markup_.Fail(markup_.Window().LineAhead(tag.begin), "there is a second ObjectCollection");
      if (tag.kind != Kind::kEnd) {
        markup_.SkipElement(tag);
        continue;
      }
      markup_.Skip(tag.end);
      if (name == Prefixed("CxF")) break;
    }
    markup_.RequireEnd();
    return false;
  }

  void ReadNames() {
    id_.clear();
    name_.clear();
    std::string identifier;
    bool hasName = false, hasId = false, hasType = false;
    MarkupAttribute attribute;
    for (std::string_view rest = xml_.Attributes(1); TakeAttribute(rest, attribute);) {
      if (attribute.name == "Name" && !std::exchange(hasName, true)) id_ = DecodedMarkup(attribute.value);
      if (attribute.name == "Id" && !std::exchange(hasId, true)) identifier = DecodedMarkup(attribute.value);
      hasType = hasType || attribute.name == "ObjectType";
    }
    if (!hasName) Deviates(objectLine_, "Object has no Name");
    if (!hasId) Deviates(objectLine_, "Object has no Id");
    if (!hasType) Deviates(objectLine_, "Object has no ObjectType");
    if (id_.empty()) id_ = identifier;
    if (comparesIds_ && !identifier.empty() && ids_.size() < kMaxIds &&
        !ids_.insert(std::hash<std::string>()(identifier)).second) {
      Deviates(objectLine_, "an earlier Object has the same Id");
    }
  }

  // Takes the content of the object beside its values, which are returned; 0 when there are none.
  int32_t ReadContent() {
    int32_t values = 0;
    std::string created;
    date_.reset();
    standard_.clear();
    others_.clear();
    otherHeadings_.clear();
    for (int32_t child = xml_.FirstChild(1); child > 0; child = xml_.NextSibling(child)) {
      const std::string_view name = xml_.Name(child);
      if (name == "ColorValues" && values == 0) {
        values = child;
      } else if (name == "CreationDate") {
        created = xml_.Text(child);
      } else if (name == "TagCollection") {
        ReadTags(child);
      } else {
        NoteUnused(name);
      }
    }
    if (created.empty()) Deviates(objectLine_, "Object has no CreationDate");
    if (!date_) date_ = std::move(created);
    hasNames_ = hasNames_ || !name_.empty();
    return values;
  }

  // Objects name their standards, or none does: the others would be held against whichever comes first.
  std::string_view StandardOfRow() const {
    if (standard_.empty() != hasStandards_) return standard_;
    FailRow(hasStandards_ ? "the object names no standard, and others do"
                          : "the object names a standard, and the first one does not");
  }

  // What the schema has no element for stands in tags of a collection of our own; a "Standard" of others may mean anything.
  void ReadTags(int32_t collection) {
    std::string owner;
    const bool isOwn = xml_.Attribute(collection, "Name", owner) && owner == "vrx";
    for (int32_t tag = xml_.FirstChild(collection); tag > 0; tag = xml_.NextSibling(tag)) {
      std::string word, value;
      if (!xml_.Attribute(tag, "Name", word) || !xml_.Attribute(tag, "Value", value)) continue;
      if (word == "SampleName") {
        name_ = value;
      } else if (isOwn && word == "Standard") {
        standard_ = value;
      } else if (word == "Date" && (isOwn || !value.empty())) {
        date_ = value;  // one that is no CreationDate by its form; of our own none: the object was not dated
      } else if (!options_.keepsOthers) {
        PassOver("Tag " + Shown(word));
      } else if (others_.size() < kMaxTags) {
        otherHeadings_.push_back(word);
        others_.push_back(value);
      } else {
        markup_.Fail(objectLine_, "more than 10000 tags of one object");
      }
    }
  }

  void NoteUnused(std::string_view name) {
    if (name.empty()) return;
    Note(Shown(name) + " is not used");
    PassOver(Shown(name));
  }

  void ReadValues(int32_t colorValues) {
    bool hasColors = false;
    for (int32_t value = colorValues > 0 ? xml_.FirstChild(colorValues) : 0; value > 0;
         value = xml_.NextSibling(value)) {
      const std::string_view kind = xml_.Name(value);
      if (kind == "ReflectanceSpectrum") {
        ReadSpectrum(value);
      } else if (kind == "TransmittanceSpectrum" || kind == "EmissiveSpectrum" || kind == "CustomSpectrum") {
        Note(std::string(kind) + " is ignored: it is not a reflectance");
        PassOver(std::string(kind));
        hasLights_ = hasLights_ || kind == "EmissiveSpectrum";
      } else {
        hasColors = true;
      }
    }
    if (hasColors) ReadColors(colorValues);
    for (Sample& sample : samples_) {
      if (sample.layout == nullptr) sample.layout = LayoutOf(sample.measuring, {});
      if (!geometriesDiffer_ || sample.geometry != kNoGeometry) continue;
      const MeasuringConditions& conditions = sample.layout->conditions;
      sample.geometry = conditions.geometry;
      if (onlyConditionsDiffer_ && conditions.mCondition >= 0)
        sample.geometry = kGeometryM0 + conditions.mCondition;
    }
  }

  // The colours find their samples among the spectra, so all of those come first.
  void ReadColors(int32_t colorValues) {
    for (int32_t value = xml_.FirstChild(colorValues); value > 0; value = xml_.NextSibling(value)) {
      const std::string_view kind = xml_.Name(value);
      if (kind == "ColorCIELab") {
        SampleOf(value).lab = Triple(value, {"L", "A", "B"});
      } else if (kind == "ColorCIEXYZ") {
        SampleOf(value).xyz = Triple(value, {"X", "Y", "Z"});
      } else if (kind == "ColorCIELCh") {
        const std::array<double, 3> lch = Triple(value, {"L", "C", "H"});
        constexpr double kRadians = 0.017453292519944444;
        SampleOf(value).lab = {lch[0], lch[1] * Cos(lch[2] * kRadians), lch[1] * Sin(lch[2] * kRadians)};
      } else if (!kind.ends_with("Spectrum")) {
        NoteUnused(kind);
      }
    }
  }

  const Measuring* Find(const std::string& id) const {
    const auto found = measurings_.find(id);
    return found != measurings_.end() ? &found->second : nullptr;
  }

  std::string MeasuringOf(int32_t element) {
    std::string id;
    if (!xml_.Attribute(element, "ColorSpecification", id)) {
      DeviatesAt(element, std::string(xml_.Name(element)) + " has no ColorSpecification");
    } else if (Find(id) == nullptr) {
      DeviatesAt(element, "there is no ColorSpecification \"" + Shown(id) + "\"");
    }
    return id;
  }

  // The sample that a colour belongs to: the one measured in the same way, else a new one when there is no
  // spectrum, else the first.
  Sample& SampleOf(int32_t color) {
    const std::string id = MeasuringOf(color);
    const auto same = std::ranges::find(samples_, id, &Sample::measuring);
    if (same != samples_.end()) return *same;
    const bool hasSpectra = !samples_.empty() && samples_.front().count > 0;
    if (hasSpectra && samples_.size() == 1) return samples_.front();
    return AddSample(id);
  }

  Sample& AddSample(const std::string& measuring) {
    if (samples_.size() == kMaxSamplesOfObject) FailRow("more than 256 measurements of one object");
    Sample& sample = samples_.emplace_back();
    sample.measuring = measuring;
    return sample;
  }

  std::array<double, 3> Triple(int32_t element, std::array<std::string_view, 3> names) {
    std::array<double, 3> values{};
    for (std::size_t i = 0; i < 3; ++i) {
      int32_t child = xml_.Child(element, names[i]);
      if (child == 0 && names[i] == "H") child = xml_.Child(element, "h");
      if (child == 0 || !ParseDecimal(xml_.Text(child), '.', values[i])) {
        markup_.Fail(xml_.Line(element),
                     std::string(xml_.Name(element)) + " has no number " + std::string(names[i]));
      }
    }
    return values;
  }

  void ReadSpectrum(int32_t element) {
    Sample& sample = AddSample(MeasuringOf(element));
    sample.firstValue = values_.size();
    ReadFractions(element);
    sample.count = values_.size() - sample.firstValue;
    if (sample.count == 0) markup_.Fail(xml_.Line(element), "ReflectanceSpectrum has no values");
    xml_.Attribute(element, "MeasureDate", sample.date);
    sample.layout = LayoutOf(sample.measuring, Range(element, sample));
    sample.geometry = AngleOf(element, sample.measuring);
  }

  // The numbers of an element, as percent behind those that are there. Behind its text stands the "<" of a tag.
  void ReadFractions(int32_t element) {
    const std::string_view text = xml_.RawText(element);
    const std::size_t most = values_.size() + kMaxValues;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at < end;) {
      if (IsSpace(*at)) {
        ++at;
        continue;
      }
      double percent = 0;
      const char* stop = ParseShortDecimal<2>(at, '.', percent);
      if (stop == nullptr || (stop < end && !IsSpace(*stop))) {
        stop = std::find_if(at, end, IsSpace);
        if (!ParseFractionAsPercent(Between(at, stop), percent)) {
          markup_.Fail(xml_.Line(element), "\"" + Shown(Between(at, stop)) + "\" is not a number");
        }
      }
      if (!(percent > 100 * kLeastFraction && percent < 100 * kLargestFraction) && !options_.force) {
        markup_.Fail(xml_.Line(element),
                     "the reflectance " + Shown(Between(at, stop)) +
                         " is not between -0.1 and 3, as fractions in CxF must be; --force accepts it");
      }
      if (values_.size() == most) markup_.Fail(xml_.Line(element), "more than 10000 values");
      values_.push_back(percent);
      at = stop;
    }
  }

  // The wavelengths of a spectrum: first, step and count.
  struct WavelengthRange {
    double first = 0, step = 0;
    std::size_t count = 0;
    // NOLINTNEXTLINE(modernize-use-nullptr): of what the compiler writes
    auto operator<=>(const WavelengthRange&) const = default;
  };

  WavelengthRange Range(int32_t element, const Sample& sample) {
    const Measuring* spec = Find(sample.measuring);
    WavelengthRange range{spec != nullptr ? spec->start : 0, spec != nullptr ? spec->increment : 0,
                          sample.count};
    std::string text;
    if (xml_.Attribute(element, "StartWL", text) && !ParseDecimal(text, '.', range.first)) range.first = 0;
    if (range.step == 0 && options_.lenient) range.step = 10;
    if (!(range.first >= 100) || !(range.step > 0) ||
        range.first + range.step * static_cast<double>(range.count) > 1e4) {
      markup_.Fail(xml_.Line(element),
                   "the wavelengths are not known: no StartWL, or no Increment in the "
                   "WavelengthRange of its ColorSpecification (--lenient takes 10 nm)");
    }
    return range;
  }

  // The angle of a spectrum whose ColorSpecification has several: by its name, else by its place among them.
  int32_t AngleOf(int32_t element, const std::string& measuring) {
    const Measuring* spec = Find(measuring);
    if (spec == nullptr || spec->angles.empty()) return kNoGeometry;
    if (spec->angles.size() == 1) return geometriesDiffer_ ? spec->angles.front().geometry : kNoGeometry;
    std::string name;
    if (xml_.Attribute(element, "Name", name)) {
      const auto named = std::ranges::find(spec->angles, name, &Measuring::Angle::notation);
      if (named != spec->angles.end()) return named->geometry;
    }
    const auto place =
        static_cast<std::size_t>(std::ranges::count(samples_, measuring, &Sample::measuring)) - 1;
    return place < spec->angles.size() ? spec->angles[place].geometry : kNoGeometry;
  }

  const MeasurementLayout* LayoutOf(const std::string& measuring, const WavelengthRange& range) {
    const MeasurementLayout*& layout = layouts_[{measuring, range}];
    if (layout != nullptr) return layout;
    if (layouts_.size() > LayoutPool::kMaxLayouts)
      FailRow("more than 10000 different conditions in one file");
    MeasurementLayout made;
    const Measuring* spec = Find(measuring);
    if (spec != nullptr) made.conditions = spec->conditions;
    for (std::size_t i = 0; i < range.count; ++i) {
      made.wavelengths.push_back(range.first + range.step * static_cast<double>(i));
    }
    if (range.count > 0) {
      const WavelengthFault fault = FaultOfWavelengths(made.wavelengths);
      if (!fault.reason.empty()) FailRow(fault.reason);
      if (range.first < kFirstStart || range.first > kLastStart)
        Deviates(objectLine_, "StartWL is not from 360 to 400");
    }
    if (spec != nullptr && !spec->isReflectance) Note("measured as " + Shown(spec->measurementType));
    return layout = pool_.Intern(made);
  }

  ReadOptions options_;
  MarkupWindow markup_;
  MarkupElement xml_;
  std::string prefix_;
  std::map<std::string, Measuring> measurings_;
  std::map<std::pair<std::string, WavelengthRange>, const MeasurementLayout*> layouts_;
  LayoutPool pool_;
  bool geometriesDiffer_ = false;
  bool onlyConditionsDiffer_ = false;
  int deviations_ = 0;
  bool comparesIds_ = true;  // as long as the objects are read in their order
  uint64_t firstObject_ = 0;
  int64_t firstLine_ = 1;
  const MeasurementLayout* firstLayout_ = nullptr;
  std::unordered_set<std::size_t> ids_;

  // The object that was read last.
  std::string id_, name_, standard_;
  std::optional<std::string> date_;  // of the object, empty for none; once its content was read
  std::vector<Sample> samples_;
  std::vector<double> values_;
  std::vector<std::string> others_, otherHeadings_;
  std::size_t next_ = 0;
  int64_t rows_ = 0;
  int64_t objectLine_ = 0;
  uint64_t objectOffset_ = 0;
  uint64_t bookmark_ = 0;
  bool isEnded_ = false;    // behind the last object
  bool hasLights_ = false;  // some object's
  bool hasNames_ = false;
  bool hasStandards_ = false;  // as the first object
  bool firstHasXyz_ = false;
};

}  // namespace

bool IsMarkup(std::string_view beginning) {
  if (beginning.starts_with("\xEF\xBB\xBF")) beginning.remove_prefix(3);
  const std::size_t first = beginning.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && beginning[first] == '<';
}

bool IsMarkupInLatin1(const std::string& name, std::string_view beginning) {
  if (beginning.starts_with("\xEF\xBB\xBF")) beginning.remove_prefix(3);
  const std::size_t end = beginning.find("?>");
  if (!beginning.starts_with("<?xml") || end == std::string_view::npos) return false;
  std::string encoding;
  if (!AttributeOf(beginning.substr(0, end), "encoding", encoding)) return false;
  for (const std::string_view unicode :
       {"UTF-8", "UTF8", "US-ASCII", "ASCII", "UTF-16", "UTF-16LE", "UTF-16BE"}) {
    if (EqualsIgnoringCase(encoding, unicode)) return false;
  }
  for (const std::string_view latin : {"ISO-8859-1", "LATIN1", "WINDOWS-1252"}) {
    if (EqualsIgnoringCase(encoding, latin)) return true;
  }
  throw InputError(name + " (CxF3), line 1: the encoding " + Shown(encoding) +
                   " is not read; UTF-8, UTF-16 and "
                   "ISO-8859-1 are");
}

std::unique_ptr<MeasurementReader> ReadCxf(InputStream input, const ReadOptions& options) {
  if (input.size == 0) HoldInput(input);
  return std::make_unique<CxfReader>(std::move(input), options);
}

}  // namespace vrx::io
