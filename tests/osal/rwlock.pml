/* The lock word of src/osal/c/linux/rwlock.cpp, explored exhaustively: two writers, and two readers,
 * one of which takes the word a second time while it holds it. What counts steps or time there (spinning,
 * patience, naps) ends at any moment here. Sleepers sleep until they are woken, so a wake-up that
 * is lost shows as a deadlock. */
#define WRITER 1
#define READERS_ASLEEP 2
#define WRITERS_ASLEEP 4
#define WRITER_STARVES 8
#define ONE_READER 16
#define HELD(word) ((word & WRITER) || word >= ONE_READER)

int word;
bool reader_sleeps[2], writer_sleeps[2];
byte inside, writing; /* holds for reading, writers within */

/* A futex: sleeps if the word is still as expected. */
inline sleep_on(sleeps, expected) {
    atomic { sleeps = (word == (expected)) }
    !sleeps
}

inline wake_one_writer() {
    do
    :: atomic { !HELD(word) && (word & WRITERS_ASLEEP) -> word = word & ~WRITERS_ASLEEP }
       /* the kernel picks one of those asleep */
       atomic {
           if
           :: writer_sleeps[0] -> writer_sleeps[0] = false
           :: writer_sleeps[1] -> writer_sleeps[1] = false
           :: !writer_sleeps[0] && !writer_sleeps[1]
           fi
       }
       break
    :: atomic { HELD(word) || !(word & WRITERS_ASLEEP) -> break }
    od
}

inline leave_reading() {
    atomic { before = word; word = word - ONE_READER }
    if
    :: (before & ~(READERS_ASLEEP | WRITER_STARVES)) == (ONE_READER | WRITERS_ASLEEP) ->
        wake_one_writer()
    :: else
    fi;
    before = 0 /* forgotten values make equal states */
}

inline lock_reading(courteous) {
    atomic { before = word; word = word + ONE_READER }
    if
    :: courteous && (before & WRITER_STARVES) ->
        leave_reading();
        skip; /* a nap, until the bit is gone or the time is up */
        atomic { before = word; word = word + ONE_READER }
    :: else
    fi
    do
    :: atomic { now = word }
       if
       :: !(now & WRITER) -> break
       :: (now & WRITER) ->
           if
           :: now & READERS_ASLEEP -> sleep_on(reader_sleeps[me], now)
           :: atomic { !(now & READERS_ASLEEP) && word == now -> word = now | READERS_ASLEEP }
              sleep_on(reader_sleeps[me], now | READERS_ASLEEP)
           :: !(now & READERS_ASLEEP) && word != now
           fi
       fi
    od
    inside++;
    assert(writing == 0)
}

inline unlock_reading() {
    inside--;
    leave_reading()
}

proctype reader(byte me) {
    int before, now;
    lock_reading(true);
    if
    :: me == 0 -> lock_reading(false); unlock_reading()
    :: else
    fi;
    unlock_reading()
}

proctype writer(byte me) {
    int before, now;
    int marks = WRITERS_ASLEEP;
    int asleep = 0;
    do
    :: atomic { now = word }
       if
       :: !HELD(now) ->
           if
           :: atomic { word == now -> word = (now & ~WRITER_STARVES) | WRITER | asleep } break
           :: word != now
           fi
       :: HELD(now) ->
           atomic {
               if
               :: skip
               :: marks = marks | WRITER_STARVES /* patience is over */
               fi;
               if
               :: (now & marks) == marks
               :: (now & marks) != marks && word == now -> word = now | marks
               :: (now & marks) != marks && word != now -> goto again
               fi;
               asleep = WRITERS_ASLEEP
           }
           sleep_on(writer_sleeps[me], now | marks)
       fi;
again: now = 0
    od;
    now = 0;
    marks = 0;
    asleep = 0;
    writing++;
    assert(writing == 1 && inside == 0);
    writing--;
    atomic { before = word; word = word - WRITER }
    if
    :: before & (READERS_ASLEEP | WRITERS_ASLEEP) ->
        atomic { before = word; word = word & ~READERS_ASLEEP }
        if
        :: before & READERS_ASLEEP ->
            atomic { reader_sleeps[0] = false; reader_sleeps[1] = false }
        :: else
        fi;
        wake_one_writer()
    :: else
    fi
}

init {
    atomic { run reader(0); run reader(1); run writer(0); run writer(1) }
    _nr_pr == 1;
    assert(!HELD(word) && !(word & WRITER_STARVES))
}
