# Prints the manual page of the program that the shell starts with $P3DGRID: a template with what
# the help of the program and of its commands says in place of @COMMANDS@, @OPTIONS@ and @EXAMPLES@,
# and its version of @VERSION@.

function add(text) {
  gsub(/-/, "\\-", text)
  page[part] = page[part] text "\n"
}

# The part of the page for a section of a help text. Options that many commands have are described
# once, in parts of their own.
function part_of(section, command) {
  if (section ~ /^Examples?$/) return command == "" ? "EXAMPLES" : "COMMANDS"
  if (command == "" && section == "Options") return "Every command"
  return section ~ /^(Positionals|Options)$/ ? "COMMANDS" : section
}

# Begins an option, argument or command, whose name and values end before two spaces.
function begin_entry(line,    end, name, values) {
  end = match(line "  ", /[^ ]  /)
  name = substr(line, 3, end - 2)
  sub(/( \.\.\.)?( REQUIRED| x [0-9]+| Excludes: .*)?$/, "", name)
  is_known = ("Every command", name) in known || (part, name) in known
  if (is_known) return
  if (part != "COMMANDS") known[part, name] = 1
  if (part == "Subcommands") commands[++command_count] = name
  else if (page[part] == "") parts[++part_count] = part
  values = match(name, / .*/) ? substr(name, RSTART) : ""
  add(".TP\n.BI " substr(name, 1, length(name) - length(values)) " \"" values "\"")
  describe(substr(line, end + 1))
}

function describe(text) {
  sub(/^ +/, "", text)
  if (text != "" && !is_known) add(text)
}

function read_help(command,    help, line, before) {
  help = program " " command " --help"
  if ((help | getline before) <= 0 || (help | getline line) <= 0) exit 1
  part = part_of("Options", command)
  if (command != "") add(".SS " substr(line, length("Usage: ") + 1) "\n" before)
  for (; (help | getline line) > 0; before = line) {
    if (line ~ /^[^ ].*:$/) {
      part = part_of(substr(line, 1, length(line) - 1), command)
      if (line ~ /^Example/) add((command == "" ? "" : ".PP\n" line "\n") ".EX")
    } else if (line ~ /^  p3dgrid /) {
      add(substr(line, 3))
    } else if (line ~ /^  [^ ]/) {
      begin_entry(line)
    } else if (line ~ /^ /) {
      describe(line)
    } else if (line != "" && command != "") {
      part = "COMMANDS"
      add((before == "" ? ".PP\n" : "") line)
    }
  }
  add(".EE")
  close(help)
}

BEGIN {
  program = ENVIRON["P3DGRID"]
  (program " --version") | getline version
  read_help("")
  for (c = 1; c <= command_count; ++c) read_help(commands[c])
  for (p = 1; p <= part_count; ++p) {
    if (parts[p] != "COMMANDS") page["OPTIONS"] = page["OPTIONS"] ".SS " parts[p] "\n" page[parts[p]]
  }
}

/^@[A-Z]+@$/ {
  printf "%s", page[substr($0, 2, length($0) - 2)]
  next
}
{
  sub(/@VERSION@/, version)
  print
}
