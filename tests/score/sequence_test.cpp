#include "torv/score/master_track.h"
#include "torv/score/sequence.h"
#include "torv/score/sequence_object.h"

#include "allocation_failure.h"
#include "values.h"

#include <doctest/doctest.h>

#include <memory>
#include <string>

namespace {

void AddTempo(CMasterTrack* master, DWORD delta) {
    tagMasterEventEntry entry{delta, torv::kEventTempo, 0, 500000, 0};
    CHECK(master->AddEvent(&entry) == 1);
}

} // namespace

TEST_CASE("song: tracks in order, and its length is the longest one's, wherever that stands") {
    CSequence song;
    CHECK(song.GetObjectLength(nullptr) == 0); // no master track yet
    CHECK(song.Create(nullptr) == 1);
    CSequenceObject* const a = CSequence::CreateObject();
    CSequenceObject* const b = CSequence::CreateObject();
    CSequenceObject* const c = CSequence::CreateObject();
    const POSITION at = song.AddObject(a);
    const POSITION first = song.InsertObject(at, b, 0);
    song.InsertObject(at, c, 1);
    POSITION next = song.GetHeadObjectPosition();
    POSITION back = song.GetTailObjectPosition();
    CHECK(Values{song.GetNextObject(next), song.GetNextObject(next), song.GetNextObject(next), next,
                 song.GetNextObject(next)} == Values(b, a, c, 0, 0));
    CHECK(Values{song.GetPrevObject(back), song.GetPrevObject(back), song.GetPrevObject(back), back,
                 song.GetPrevObject(back)} == Values(c, a, b, 0, 0));
    CHECK(Values(song.GetHeadObject(), song.GetTailObject(), song.GetObjectAt(at), song.GetObjectAt(nullptr),
                 song.FindObject(b), song.GetObjectCount()) == Values(b, c, a, 0, first, 3));

    a->SetLength(900);
    b->SetLength(500);
    c->SetLength(700);
    CHECK(Values(song.GetObjectLength(nullptr), song.GetObjectLength(at), song.GetObjectLength(first)) ==
          "900 900 500");
    AddTempo(song.GetMasterTrack(), 1000);
    CHECK(song.GetObjectLength(nullptr) == 1000);

    song.SetModify(1);
    song.GetMasterTrack()->SetModify(1);
    CHECK(song.IsObjectModified() == 0); // only the tracks count
    c->SetModify(1);
    CHECK(song.IsObjectModified() == 1);
    song.ClearAllModified();
    CHECK(Values(song.IsObjectModified(), song.GetModify(), song.GetMasterTrack()->GetModify()) == "0 0 1");

    song.RemoveObjectAt(nullptr, 1);
    song.RemoveObjectAt(first, 0);
    CHECK(song.FindObject(b) == nullptr);
    CHECK(b->GetLength() == 500); // only taken out
    delete b;
    song.RemoveObjectAt(at, 1);
    CHECK(song.GetHeadObject() == c);
    song.RemoveAllObject();
    CHECK(Values(song.GetHeadObject(), song.GetTailObject()) == "0 0");
}

TEST_CASE("song: settings that are not what a host would think") {
    CSequence song;
    const auto signature = [&song] {
        return Values(int{song.GetInitialTimeSig().numerator}, int{song.GetInitialTimeSig().denominatorExponent});
    };
    CHECK(Values(signature(), song.GetTimeDivision(), song.GetInitialTempo()) == "4 2 480 500000");
    song.SetInitialTimeSig(8, 9); // exponent, then numerator
    CHECK(signature() == "9 8");
    song.SetInitialTimeSig({3, 2});
    CHECK(signature() == "3 2");
    CHECK(song.SetName(std::string(300, 'x').c_str()) == 1);
    CHECK(Values(song.GetName(), song.GetModify()) == std::string(259, 'x') + " 0"); // no setter sets the flag
}

TEST_CASE("song: whose the master track is") {
    CMasterTrack master;
    REQUIRE(master.Create() == 1);
    AddTempo(&master, 700);
    {
        CSequence song;
        CHECK(Values{song.Create(&master), song.Create(&master), song.GetMasterTrack()} == Values(1, 1, &master));
        CHECK(song.Create(nullptr) == 1); // one of its own in the place of the caller's
        CMasterTrack* const own = song.GetMasterTrack();
        AddTempo(own, 300);
        CHECK(Values{song.Create(own), song.GetMasterTrack()} == Values(1, own)); // handed back to it, it stays its own
        CHECK(own->GetLength() == 300);
        FailEachAllocation([&](AllocationFailure& failure) {
            CMasterTrack* const held = song.GetMasterTrack();
            const int done = failure.During([&] { return song.Create(nullptr); });
            CHECK(done == !failure.HasHappened());
            if (!done)
                CHECK(song.GetMasterTrack() == held);
        });
        CHECK(song.Create(&master) == 1);
    }
    CHECK(master.GetLength() == 700); // survived the song
}

TEST_CASE("song: a track for which there is no memory stays the caller's") {
    FailEachAllocation([](AllocationFailure& failure) {
        CSequence song;
        auto track = std::make_unique<CSequenceObject>();
        if (failure.During([&] { return song.AddObject(track.get()); }))
            track.release();
        CHECK(song.GetObjectCount() == !failure.HasHappened());
    });
}
