# What tests/gdb/session.sh has gdb do with the program of host.cpp. Each line of the answers is
# compared with session.expected, in which ADDRESS stands for every address.
set pagination off
set confirm off
python
class Try(gdb.Command):
    """A command that may fail: tells the error and goes on."""

    def invoke(self, argument, from_tty):
        try:
            gdb.execute(argument)
        except gdb.error as error:
            print("error: %s" % error)


class NextStop(gdb.Command):
    """Goes on to the next breakpoint, of which nothing is shown, and to who called it."""

    def invoke(self, argument, from_tty):
        gdb.execute("continue", to_string=True)
        gdb.execute("up", to_string=True)


Try("try", gdb.COMMAND_USER)
NextStop("next-stop", gdb.COMMAND_USER)
end

python
for place in ("beforeStart", "atStart", "atTexts", "atArrays", "atTables", "atLists", "atValues",
              "atObjects", "atDamage"):
    gdb.execute("break " + place, to_string=True)
end

echo \n== commands before anything runs\n
fx queue
fx timers
fx handlers
fx wiring
fx locals
help fx

python gdb.execute("run </dev/null", to_string=True)
echo \n== commands before the toolkit is initialised\n
fx queue
fx timers
fx handlers
fx wiring

next-stop
echo \n== commands when there is nothing\n
fx queue
fx timers
fx handlers
fx wiring

next-stop
echo \n== texts\n
print name
print empty
print bytes
print reference
print *pointer
print title
print path
print joined
print buffer
print longOne
set print elements 3
print name
print bytes
set print elements 200

next-stop
echo \n== arrays\n
print none
print bools
print chars
print shorts
print ints
print longs
print floats
print doubles
print bytes
print words
print sizes
print pointers
print strings
print own
print places
print tables
print pages
print card
print chapter
print base
print *pointer
set print elements 2
print ints
set print elements 200
set print pretty on
print places
set print pretty off
fx locals

next-stop
echo \n== dictionaries and sets\n
print phones
print reference
print *pointer
print nowhere
print iter
print addresses
print contacts
print squares
print words
print word
print numbers
set print elements 2
print many
set print elements 200
print sizeof(many) >= 0

next-stop
echo \n== lists\n
print list
print links
print table
print names

next-stop
echo \n== values\n
print nothing
print truth
print number
print longNumber
print real
print precise
print text
print string
print strings
print base
print size
print title
print place
print holder
print owner
print codes
print counted
print none

next-stop
echo \n== objects that nothing is sent to yet\n
fx queue
fx timers
fx handlers

next-stop
echo \n== objects\n
print counter
print *base
print program
print both
print once
print again
print reader
print *counter.total
print *input
print *message
print shared
fx queue
fx timers
fx handlers
fx wiring &counter
fx wiring program.meter
fx wiring both
fx wiring base
fx wiring shared
fx wiring lone
fx wiring 12
try fx wiring nosuch
fx wiring

next-stop
echo \n== damage\n
try print *noString
print string
print zeroString
print table
print array
print object
print list
print hash
print names
print reference
print gone
print circle
print looped
set print elements unlimited
print looped
fx wiring &object
fx queue
python gdb.execute("continue", to_string=True)
echo \n== the end\n
fx queue
