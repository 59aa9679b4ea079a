// vrx swatch: a picture of trials beside their standards, with names, differences and verdicts.

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxio/text/decimal.h>

#include "pictures/swatches.h"
#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/judging/comparison.h"
#include "tools/vrx/judging/judge.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/output/file_output.h"
#include "tools/vrx/report/charts.h"
#include "tools/vrx/report/picture_file.h"

namespace vrx::tool {
namespace {

struct SwatchOptions {
  ComparisonOptions comparison;
  std::string output;
  JudgingOptions judging;
};

// A standard and a trial under one illuminant, as they are painted.
struct Pair {
  pictures::SwatchPair colours;
  bool IsDisplayable() const { return colours.standard.inGamut && colours.trial.inGamut; }
  double difference = kUnset;
  Verdict verdict = kFail;
};

// One trial: its title and its pairs, one per illuminant.
struct Card {
  std::string title;
  std::vector<Pair> pairs;
};

// The standard's name, then the trial's where it is another one.
std::string CardTitle(const Standard& standard, const CurveRow& trial) {
  std::string title = standard.id;
  if (trial.id != title) title.append(" | ").append(trial.id);
  if (!trial.name.empty() && trial.name != trial.id) title.append(" ").append(trial.name);
  return title;
}

// Of the trial that `judge` judged against the standard.
Card MakeCard(const JudgeSettings& settings, const Judge& judge, const Standard& standard,
              const CurveRow& trial) {
  Card card{CardTitle(standard, trial), {}};
  const Judgement judgement = judge.Row();
  for (std::size_t i = 0; i < settings.illuminants.size(); ++i) {
    const vrxIlluminant illuminant = settings.illuminants[i];
    Pair pair;
    pair.colours.standard = pictures::SwatchOf(judge.StandardColor(0, i).xyz, illuminant, settings.observer);
    pair.colours.trial = pictures::SwatchOf(judgement.under[i].trial.xyz, illuminant, settings.observer);
    pair.difference = judgement.under[i].difference.back();
    pair.verdict = judgement.under[i].verdict;
    card.pairs.push_back(pair);
  }
  return card;
}

// Layout, in pixels -----------------------------------------------------------------------------------------

constexpr int32_t kMargin = 24;
constexpr int32_t kPatch = 84;  // side of a patch; standard and trial touch
constexpr int32_t kPairGap = 16;
constexpr int32_t kTitleSize = 14;
constexpr int32_t kTextSize = 12;
constexpr int32_t kTitleHeight = 22;
constexpr int32_t kCaptionHeight = 36;  // two lines
constexpr int32_t kCardGap = 24;
constexpr int32_t kHeadingHeight = 54;
constexpr int32_t kUsualWidth = 1200;
constexpr std::size_t kMaxTrials = 1000;

// Neutral and lighter than most samples: a coloured surround would shift what the eye sees.
constexpr pictures::Paint kSurround = pictures::Paint::Fixed(0xD9D9D9);
constexpr pictures::Paint kInk = pictures::Paint::Fixed(0x202020);

struct VerdictLook {
  const char* text;
  pictures::Paint paint;
};
constexpr VerdictLook kVerdictLooks[] = {{"fail", pictures::Paint::Fixed(0x1800A0)},
                                         {"warning", pictures::Paint::Fixed(0x00487A)},
                                         {"pass", pictures::Paint::Fixed(0x205800)}};

std::string Decimals(double value) {
  return IsUnset(value) ? "-" : FixedDecimals(value, 2);
}

// The picture of all cards, in as many columns as fit the usual width.
class Sheet {
 public:
  Sheet(const JudgeSettings& settings, const std::vector<Card>& cards) : settings_(settings), cards_(cards) {
    const auto pairs = static_cast<int32_t>(settings.illuminants.size());
    cardWidth_ = pairs * (2 * kPatch + kPairGap) - kPairGap + kCardGap;
    const auto count = static_cast<int32_t>(cards.size());
    columns_ = std::clamp((kUsualWidth - 2 * kMargin + kCardGap) / cardWidth_, 1, count);
    rows_ = (count + columns_ - 1) / columns_;
  }

  int32_t Width() const { return std::max(2 * kMargin + columns_ * cardWidth_ - kCardGap, 480); }
  int32_t Height() const { return kMargin + kHeadingHeight + rows_ * kCardHeight; }

  pictures::Picture Draw() const {
    if (Width() > kLongestSide || Height() > kLongestSide) {
      throw InputError("too many trials or illuminants for one picture");
    }
    pictures::Picture picture;
    DrawHeading(picture);
    for (std::size_t i = 0; i < cards_.size(); ++i) {
      const auto place = static_cast<int32_t>(i);
      DrawCard(picture, kMargin + place % columns_ * cardWidth_,
               kMargin + kHeadingHeight + place / columns_ * kCardHeight, cards_[i]);
    }
    return picture;
  }

 private:
  static constexpr int32_t kCardHeight = kTitleHeight + kPatch + kCaptionHeight + kCardGap;

  // A line of text whose letters stand on `y`.
  static void DrawText(pictures::Picture& picture, double x, double y, std::string_view text, double size,
                       pictures::Paint paint) {
    pictures::Shape line;
    line.fontSize = size;
    picture.Text({x, y - pictures::BaselineOf(line), 0, 0}, ForPicture(text), paint, pictures::Align::kStart,
                 size);
  }

  void DrawHeading(pictures::Picture& picture) const {
    const bool allDisplayable = std::ranges::all_of(
        cards_, [](const Card& card) { return std::ranges::all_of(card.pairs, &Pair::IsDisplayable); });
    DrawText(picture, kMargin, kMargin + 12, TitleOf(settings_.difference) + ", left: standard, right: trial",
             kTitleSize, kInk);
    if (!allDisplayable) {
      DrawText(picture, kMargin, kMargin + 30, "* outside the range of the display, clipped", kTextSize,
               kInk);
    }
  }

  void DrawCard(pictures::Picture& picture, int32_t x, int32_t y, const Card& card) const {
    constexpr int32_t kDigitWidth = 9;
    const auto letters = static_cast<std::size_t>((cardWidth_ - kCardGap) / kDigitWidth);
    DrawText(picture, x, y + kTitleSize, Shortened(card.title, letters), kTitleSize, kInk);
    for (std::size_t i = 0; i < card.pairs.size(); ++i) {
      DrawPair(picture, x + static_cast<int32_t>(i) * (2 * kPatch + kPairGap), y + kTitleHeight,
               settings_.illuminants[i], card.pairs[i]);
    }
  }

  void DrawPair(pictures::Picture& picture, double x, double y, vrxIlluminant illuminant,
                const Pair& pair) const {
    constexpr double kLine = 16;
    pictures::DrawSwatchPair(picture, {x, y, 2.0 * kPatch, kPatch}, pair.colours, pictures::kPaperLook);
    const std::string name = ShownLight(illuminant, settings_.observer) + (pair.IsDisplayable() ? "" : " *");
    DrawText(picture, x, y + kPatch + kLine, Shortened(name, 20), kTextSize, kInk);
    DrawText(picture, x, y + kPatch + 2 * kLine,
             "\xCE\x94"
             "E " +
                 Decimals(pair.difference),
             kTextSize, kInk);
    const VerdictLook& look = kVerdictLooks[pair.verdict];
    DrawText(picture, x + kPatch, y + kPatch + 2 * kLine, look.text, kTextSize, look.paint);
  }

  const JudgeSettings& settings_;
  const std::vector<Card>& cards_;
  int32_t cardWidth_, columns_, rows_;
};

// ----------------------------------------------------------------------------------------------------------

// Judges the trials. In a file that holds the standard too, every other row is a trial.
std::vector<Card> JudgeAll(Comparison& comparison, bool oneFile, const JudgeSettings& settings,
                           const SystemOptions& system) {
  std::vector<Card> cards;
  Judge judge(settings);
  OwnRows own;
  bool areAnglesKnown = true;
  comparison.ForEachTrial([&](const CurveRow& trial, const Standard& standard) {
    if (oneFile && own.Take(standard, trial)) return;
    if (cards.size() == kMaxTrials)
      comparison.Trials().Source().FailRow("more than 1000 trials for one picture");
    judge.Evaluate(standard, trial);
    areAnglesKnown = areAnglesKnown && SystemOptions::HasAngle(standard.geometry);
    cards.push_back(MakeCard(settings, judge, standard, trial));
  });
  comparison.WarnAboutInput();
  system.WarnAboutAngle(areAnglesKnown);
  if (cards.empty()) throw InputError(comparison.Trials().Source().Name() + ": there are no trials");
  return cards;
}

void RunSwatch(SwatchOptions& options) {
  PictureFormatOf(options.output);  // refuses other names before the work
  ComparisonOptions& files = options.comparison;
  const bool oneFile = files.trials.empty();
  if (oneFile && files.pairs) throw InputError("--pairs needs a second file");
  if (oneFile) files.trials = files.standard;
  Comparison comparison(files, options.judging.viewing);
  const JudgeSettings settings = SettingsOf(options.judging);
  const std::vector<Card> cards = JudgeAll(comparison, oneFile, settings, options.judging.system);
  WarnAboutLimits(options.judging, settings);
  const Sheet sheet(settings, cards);
  SavePicture(sheet.Draw(), {sheet.Width(), sheet.Height(), kSurround}, options.output);
}

}  // namespace

void AddSwatch(Command& tool) {
  const auto options = std::make_shared<SwatchOptions>();
  Command command = tool.AddCommand("swatch", "Draw swatches of trials beside their standards");
  ComparisonOptions& files = options->comparison;
  files.content = Content::kCurvesOrColors;
  command
      .AddOption("FILE", files.standard,
                 "Curves or colours of the standard and, without TRIALS, of the trials")
      .ReadsFile()
      .Required();
  command.AddOption("TRIALS", files.trials, "Curves or colours of the trials").ReadsFile();
  command.AddOption("--output", options->output, "File to write; its name decides between PNG and SVG")
      .WritesFile()
      .Required()
      .Shows("FILE.png|FILE.svg");
  AddStandardOptions(command, files);
  AddJudgingOptions(command, options->judging, UsualIlluminants());
  command.SetNotes(
      "Each pair is shown as it looks to somebody adapted to the illuminant, whose white becomes the white "
      "of\n"
      "the display. The display is assumed to have the primaries of sRGB.\n\n"
      "Examples:\n"
      "  vrx swatch batch.csv --output batch.png             # the first row beside each of the others\n"
      "  vrx swatch master.csv lot.csv --pairs --output lot.svg --illuminants D65,T84\n");
  command.SetAction([options] {
    RunSwatch(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
