#include "recorded_voice.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <stdexcept>

extern "C" {
#include <flite/cst_cg.h>
#include <flite/flite.h>
}

namespace {

constexpr const char* kSilence = "pau";
constexpr const char* kVowels[] = {"aa", "ae", "ah", "ao", "aw", "ax", "ay", "eh",
                                   "er", "ey", "ih", "iy", "ow", "oy", "uh", "uw"};

// The utterance that is being spoken: the front end is called back without any argument of ours.
const std::vector<std::vector<std::string>>* g_words;
const std::set<size_t>* g_asked; ///< sounds whose frames are wanted, silences not counted

/// A word for every token, pronounced as told.
cst_utterance* PronounceTokens(cst_utterance* utterance) {
    cst_relation* const words = utt_relation_create(utterance, "Word");
    size_t index = 0;
    for (cst_item* token = relation_head(utt_relation(utterance, "Token")); token; token = item_next(token)) {
        if (index >= g_words->size())
            throw std::runtime_error("the front end has split a token");
        cst_val* phones = nullptr;
        const std::vector<std::string>& pronunciation = (*g_words)[index++];
        for (auto phone = pronunciation.rbegin(); phone != pronunciation.rend(); ++phone)
            phones = cons_val(string_val(phone->c_str()), phones);
        item_set(token, "phones", phones);
        cst_item* const word = item_add_daughter(token, nullptr);
        item_set_string(word, "name", "word");
        relation_append(words, word);
    }
    return utterance;
}

/// Stressed syllables are accented, as they are when they are sung: flite's own question takes long.
cst_utterance* AccentStress(cst_utterance* utterance) {
    cst_relation* const events = utt_relation_create(utterance, "IntEvent");
    cst_relation* const intonation = utt_relation_create(utterance, "Intonation");
    for (cst_item* syllable = relation_head(utt_relation(utterance, "Syllable")); syllable;
         syllable = item_next(syllable))
        if (std::strcmp(ffeature_string(syllable, "stress"), "1") == 0) {
            cst_item* const event = relation_append(events, nullptr);
            item_set_string(event, "name", "H*");
            item_add_daughter(relation_append(intonation, syllable), event);
        }
    return utterance;
}

cst_utterance* LeaveAsIs(cst_utterance* utterance) { return utterance; }

/// The mean where nobody asks: it takes the models longer to say this than everything else.
float StateSeconds(cst_item* state, bool isAsked, const cst_cg_db* models) {
    const float deviations = isAsked ? val_float(cart_interpret(state, models->dur_cart[0])) : 0;
    const char* const name = item_feat_string(state, "name");
    const dur_stat* const* stats = models->dur_stats[0];
    const dur_stat* found = stats[0]; // of a name that is not there
    for (int at = 1; stats[at]; ++at)
        if (std::strcmp(stats[at]->phone, name) == 0)
            found = stats[at];
    return deviations * found->stddev + found->mean;
}

/// The relations that the models' questions walk: states below segments, frames below states.
cst_utterance* LayFrames(cst_utterance* utterance) {
    const cst_cg_db* const models = val_cg_db(utt_feat_val(utterance, "cg_db"));
    cst_relation* const states = utt_relation_create(utterance, "HMMstate");
    cst_relation* const ofSegments = utt_relation_create(utterance, "segstate");
    for (cst_item* segment = relation_head(utt_relation(utterance, "Segment")); segment; segment = item_next(segment)) {
        cst_item* const parent = relation_append(ofSegments, segment);
        const char* const name = item_feat_string(segment, "name");
        const char* const* names = models->phone_states[0];
        for (int phone = 1; models->phone_states[phone]; ++phone)
            if (std::strcmp(models->phone_states[phone][0], name) == 0)
                names = models->phone_states[phone];
        for (int i = 1; names[i]; ++i) {
            cst_item* const state = relation_append(states, nullptr);
            item_add_daughter(parent, state);
            item_set_string(state, "name", names[i]);
            item_set_int(state, "statepos", i);
        }
    }
    cst_relation* const frames = utt_relation_create(utterance, "mcep");
    cst_relation* const ofStates = utt_relation_create(utterance, "mcep_link");
    float end = 0;
    int frame = 0;
    size_t sound = 0;
    for (cst_item* segment = relation_head(ofSegments); segment; segment = item_next(segment)) {
        const bool isSilence = std::strcmp(item_feat_string(segment, "name"), kSilence) == 0;
        const bool isAsked = !isSilence && g_asked->count(sound++) != 0;
        for (cst_item* child = item_daughter(segment); child; child = item_next(child)) {
            cst_item* const state = item_as(child, "HMMstate");
            end += StateSeconds(state, isAsked, models);
            item_set_float(state, "end", end);
            cst_item* const parent = relation_append(ofStates, state);
            for (; static_cast<float>(frame) * models->frame_advance <= end; ++frame) {
                if (!isAsked)
                    continue;
                cst_item* const item = relation_append(frames, nullptr);
                item_add_daughter(parent, item);
                item_set_int(item, "frame_number", frame);
                item_set(item, "name", item_feat(parent, "name"));
            }
        }
    }
    for (cst_item* segment = relation_head(utt_relation(utterance, "Segment")); segment; segment = item_next(segment))
        item_set(segment, "end", ffeature(segment, "R:segstate.daughtern.end"));
    return utterance;
}

/// One of the models' numbers, which are stored within a range; each is followed by its deviation.
float Stored(const cst_cg_db* models, int vector, int channel) {
    return models->model_min[channel] +
           static_cast<float>(models->model_vectors[0][vector][channel]) / 65535.0F * models->model_range[channel];
}

} // namespace

RecordedVoice::RecordedVoice(cst_voice_struct* voice)
    : m_voice(voice), m_models(val_cg_db(feat_val(voice->features, "cg_db"))) {
    if (m_models->model_shape != CST_CG_MODEL_SHAPE_BASE_MINRANGE || m_models->num_channels[0] != 114 ||
        m_models->num_param_models != 1)
        throw std::runtime_error("the voice's models have a shape that is not known");
    std::set<std::string> names;
    for (int i = 0; m_models->phone_states[i]; ++i)
        names.insert(m_models->phone_states[i][0]);
    names.erase(kSilence);
    names.erase("ssil"); // a short silence, which the front end never asks for
    m_phones.assign(1, kSilence);
    m_phones.insert(m_phones.end(), names.begin(), names.end());
    feat_set(voice->features, "textanalysis_func", uttfunc_val(PronounceTokens));
    feat_set(voice->features, "pos_tagger_func", uttfunc_val(LeaveAsIs)); // the words are none
    feat_set(voice->features, "intonation_func", uttfunc_val(AccentStress));
    feat_set(voice->features, "wave_synth_func", uttfunc_val(LayFrames));
}

bool RecordedVoice::IsVowel(const std::string& phone) {
    return std::any_of(std::begin(kVowels), std::end(kVowels), [&](const char* vowel) { return phone == vowel; });
}

bool RecordedVoice::IsWord(const Triple& triple) const {
    return triple.before != 0 || triple.after != 0 || IsVowel(m_phones[static_cast<size_t>(triple.phone)]);
}

/// The triple with as many vowels around it as make it a word; `place` is where in the word the phone stands. Its
/// vowel, else the vowel after it, is stressed.
std::vector<std::string> RecordedVoice::WordFor(const Triple& triple, size_t& place) const {
    const std::string* const phones[] = {&m_phones[static_cast<size_t>(triple.before)],
                                         &m_phones[static_cast<size_t>(triple.phone)],
                                         &m_phones[static_cast<size_t>(triple.after)]};
    std::vector<std::string> word;
    const bool isVowel = IsVowel(*phones[1]);
    if (triple.before != 0 && !isVowel && !IsVowel(*phones[0]))
        word.emplace_back("eh0");
    const size_t stressed = isVowel ? 1 : IsVowel(*phones[2]) ? 2 : 0;
    for (size_t i = 0; i < 3; ++i) {
        if (*phones[i] == kSilence)
            continue;
        if (i == 1)
            place = word.size();
        const bool takesStress = i == stressed && *phones[i] != "ax";
        word.push_back(IsVowel(*phones[i]) ? *phones[i] + (takesStress ? "1" : "0") : *phones[i]);
    }
    if (triple.after != 0 && !isVowel && !IsVowel(*phones[2]))
        word.emplace_back("eh1");
    return word;
}

std::vector<RecordedVoice::Sequence> RecordedVoice::Speak(const std::vector<Triple>& triples) {
    // A word before silence ends a phrase, one after silence begins one; the others stand between two neutral words.
    std::vector<std::vector<std::string>> words;
    std::vector<std::pair<size_t, size_t>> places; // word, phone in it
    std::string text;
    const auto add = [&](const std::vector<std::string>& word, bool endsPhrase) {
        words.push_back(word);
        text += endsPhrase ? "a, " : "a ";
    };
    const std::vector<std::string> neutral = {"dh", "ax0"};
    bool phraseBegins = true;
    for (const Triple& triple : triples) {
        size_t place = 0;
        const std::vector<std::string> word = WordFor(triple, place);
        if ((triple.before == 0) != phraseBegins) {
            if (phraseBegins)
                add(neutral, false);
            else
                add(neutral, true);
        }
        places.emplace_back(words.size(), place);
        add(word, triple.after == 0);
        phraseBegins = triple.after == 0;
    }
    if (!phraseBegins)
        add(neutral, true);

    // Where each word's first sound is among all.
    std::vector<size_t> begins(1);
    for (const std::vector<std::string>& word : words)
        begins.push_back(begins.back() + word.size());
    std::set<size_t> asked;
    for (const auto& [word, place] : places)
        asked.insert(begins[word] + place);
    g_words = &words;
    g_asked = &asked;
    cst_utterance* const utterance = flite_synth_text(text.c_str(), m_voice);
    if (!utterance)
        throw std::runtime_error("flite gave up on " + text);
    std::vector<cst_item*> segments;
    for (cst_item* segment = relation_head(utt_relation(utterance, "Segment")); segment; segment = item_next(segment))
        if (std::strcmp(item_feat_string(segment, "name"), kSilence) != 0)
            segments.push_back(segment);

    std::vector<Sequence> sequences(triples.size());
    for (size_t i = 0; i < triples.size(); ++i) {
        const size_t at = begins[places[i].first] + places[i].second;
        if (at >= segments.size())
            throw std::runtime_error("flite has left out a sound");
        cst_item* const segment = segments[at];
        if (m_phones[static_cast<size_t>(triples[i].phone)] != item_feat_string(segment, "name"))
            throw std::runtime_error("flite has changed a sound");
        const char* const before = ffeature_string(segment, "p.name");
        const char* const after = ffeature_string(segment, "n.name");
        if (m_phones[static_cast<size_t>(triples[i].before)] != before ||
            m_phones[static_cast<size_t>(triples[i].after)] != after)
            throw std::runtime_error(std::string("a sound stands between others than was asked for: ") + before + " " +
                                     item_feat_string(segment, "name") + " " + after);
        size_t state = 0;
        for (cst_item* item = item_daughter(item_as(segment, "segstate")); item && state < rve::bank::kStates;
             item = item_next(item), ++state)
            for (cst_item* frame = item_daughter(item_as(item, "mcep_link")); frame; frame = item_next(frame)) {
                const char* const name = item_feat_string(frame, "name");
                int type = 0;
                while (m_models->types[type] && std::strcmp(m_models->types[type], name) != 0)
                    ++type;
                if (!m_models->types[type])
                    type = 0;
                sequences[i][state].push_back(val_int(cart_interpret(frame, m_models->param_trees[0][type])));
            }
    }
    delete_utterance(utterance);
    return sequences;
}

std::array<float, rve::bank::kCoefficients> RecordedVoice::MeanCepstrum() const {
    std::array<double, rve::bank::kCoefficients> sum{};
    const int count = m_models->num_frames[0];
    for (int number = 0; number < count; ++number)
        for (size_t m = 0; m < sum.size(); ++m)
            sum[m] += VectorAt(number).cepstrum[m];
    std::array<float, rve::bank::kCoefficients> mean{};
    std::transform(sum.begin(), sum.end(), mean.begin(), [&](double s) { return static_cast<float>(s / count); });
    return mean;
}

RecordedVoice::Vector RecordedVoice::VectorAt(int number) const {
    // Means and deviations in pairs: the pitch, 25 coefficients, their 25 slopes, 5 strengths, the voicing (0..10).
    Vector vector{};
    for (size_t i = 0; i < vector.cepstrum.size(); ++i)
        vector.cepstrum[i] = Stored(m_models, number, 2 + 2 * static_cast<int>(i));
    for (size_t i = 0; i < vector.strength.size(); ++i)
        vector.strength[i] = std::clamp(Stored(m_models, number, 102 + 2 * static_cast<int>(i)), 0.0F, 1.0F);
    vector.voicing = std::clamp(Stored(m_models, number, 112) / 10, 0.0F, 1.0F);
    return vector;
}
