// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/CommonWords.h"

#include <sstream>

namespace velmora {
namespace {

constexpr auto kFrequent =
    "the of and a to in is you that it he was for on are as with his they i at be this have from or "
    "had by not but what all were we when your can said there an each which she do how their if will "
    "up other about out many then them these so some her would make like him into time has look two "
    "more go see no way could my than first been call who its now find long down day did get come made "
    "may part over new take only little work know place";

constexpr auto kOthers =
    "year live me back give most very after thing our just name good man think say great where help "
    "through much before line right too old same tell boy follow came want show also around three "
    "small set put end why again turn here off went number people water don't didn't doesn't can't "
    "won't i'm i'll i've you're he's she's it's we're they're that's there's what's isn't wasn't "
    "couldn't mother father brother sister son daughter wife husband friend friends child children "
    "kids baby family doctor teacher boss police woman women girl men peter john mary susan david "
    "michael anna house home room kitchen door window garden street road town city country world "
    "school office store shop market station airport hotel restaurant church hospital bank park beach "
    "bridge building garage bathroom bedroom floor wall table chair bed car bus train plane bike boat "
    "ship truck taxi ticket flight trip ride drive traffic gas morning evening night afternoon tonight "
    "today tomorrow yesterday week weekend month hour minute minutes hours days weeks years monday "
    "sunday friday summer winter spring moment later soon early late ago already always never often "
    "sometimes usually still yet once ever since until while during news weather rain snow sun sky "
    "temperature degrees wind cloud storm music song songs movie film game games team player "
    "television radio video picture pictures photo book books page chapter story letter paper "
    "newspaper magazine email message phone computer screen light lights lamp keys key money dollars "
    "dollar price cost bill account card food dinner lunch breakfast coffee tea wine beer milk bread "
    "egg eggs meat fish chicken potatoes apple apples cake soup salad pizza recipe cook boil eat drink "
    "dog cat bird horse animal animals tree trees plant plants flower flowers river lake sea mountain "
    "island red blue green white black brown yellow big large tall high low short young hot cold warm "
    "cool fast slow hard soft easy difficult heavy dark bright clean dirty full empty open closed "
    "cheap expensive beautiful nice bad better best worse happy sad tired hungry sick boring favorite "
    "important different possible ready sure true wrong next last another both few several second "
    "third going gone coming leave leaves left arrive bring brought buy bought sell sold pay paid send "
    "sent read wrote write play played stop start started begin close opened keep kept let lost lose "
    "win won meet meeting met speak spoke talk talked told ask asked answer hear heard listen watch "
    "watched saw seen feel felt need needed use used try tried wait waiting walk run ran sit stand "
    "stood sleep slept fell fall grow grew become became born died die lives lived working worked move "
    "moved change changed order ordered remind wake cancel pause skip search found forget forgot "
    "remember understand understood believe love loved hate hope wish mean means happened happen seems "
    "looks sounds president minister government war party history science language english spanish "
    "french german capital population meaning difference definition side effects question problem idea "
    "reason result results job business company customer service report project plan birthday holiday "
    "vacation calendar appointment alarm timer reminder list address nearest north south east west one "
    "four five six seven eight nine ten eleven twelve twenty thirty hundred thousand million half "
    "pounds dozen miles london paris berlin boston america england france germany europe australia "
    "california because however although without between against under above behind near across along "
    "away together alone enough almost maybe perhaps probably really quite rather actually certainly "
    "anybody somebody everybody nobody anything something everything nothing anyone someone everyone "
    "us myself yourself itself himself should must might shall being having doing does done am able "
    "mail voice sir madam dear please thank thanks sorry hello okay yes well oh wonder guess suppose "
    "built build break broke broken cut hit hold held catch caught throw threw fly flew sing sang "
    "dance swim paint draw learn learned teach taught study pass passed fail spend spent save share "
    "join visit travel return enter stay stayed sign check fix repair wash dress wear wore hand hands "
    "head face eye eyes hair heart body foot feet arm leg mouth blood shirt shoes coat hat clothes bag "
    "box bottle cup glass plate knife fork";

std::vector<std::string> split(const char *words) {
  std::istringstream stream(words);
  std::vector<std::string> all;
  for (std::string word; stream >> word;) all.push_back(word);
  return all;
}

}  // namespace

const std::vector<std::string> &frequentWords() {
  static const std::vector<std::string> words = split(kFrequent);
  return words;
}

const std::vector<std::string> &otherCommonWords() {
  static const std::vector<std::string> words = split(kOthers);
  return words;
}

}  // namespace velmora
