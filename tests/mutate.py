#!/usr/bin/env python3
"""Measures by mutation how many faults the tests catch.

Usage: mutate.py CLONE SEED COUNT [MINUTES]             (root; ./run mutate makes the clone)
       mutate.py CLONE --list SEED COUNT                shows the mutants and tests nothing
       mutate.py CLONE --one FILE LINE 'NEW LINE'       who notices one mutant
       mutate.py CLONE --again SEED                     the survivors of a run once more

CLONE is a git clone below /tmp that nobody else uses; it is built into CLONE/build/mut. SEED and COUNT choose
the mutants: single lines of the sources, more of longer files, the kinds in turn. A mutant of the
libraries is run against their tests and two scripts, one of kwbatch and kwmedium against the
scripts that use these, until the first failure. After MINUTES (75) no further mutant is begun.
Tests run in namespaces of their own (sandbox.sh), so that a mutant can neither delete nor kill
anything else.

Prints each survivor, and the score last. All results: CLONE/../results-SEED.jsonl (a run that was
interrupted goes on there).
"""
import collections, json, os, random, re, shlex, subprocess, sys, time

ROOM_TESTS = {
    'actions': ['actions_test', 'processes_test'], 'checks': ['checks_test', 'tree_checks_test'],
    'dirs': ['dirs_test'], 'env': ['env_test'], 'files': ['files_test'], 'lang': ['lang_test'],
    'ports': ['services_test', 'ports_test'], 'report': ['report_test'], 'spk': ['spk_test'],
    'toc': ['checks_test', 'tree_checks_test'], 'kb0core': ['kb0core_test', 'catalog_test'],
    'qtoclib': ['qtoclib_test'], 'support': ['actions_test', 'spk_test', 'files_test'],
    'marker.cc': ['null_test']}
TOOL_TESTS = {
    'kwbatch': ['catalog_test', 'usage_test', 'answers_test', 'tree_life_test', 'install_failures_test',
                'install_medium_test', 'service_pack_test', 'medium_check_test', 'registration_test',
                'administration_test', 'interruption_test', 'medium_build_test'],
    'kwmedium': ['usage_test', 'medium_check_test', 'medium_build_test']}
UNIT = ['null_test', 'services_test', 'checks_test', 'ports_test', 'lang_test', 'report_test',
        'kb0core_test', 'actions_test', 'processes_test', 'files_test', 'catalog_test', 'spk_test',
        'tree_checks_test', 'qtoclib_test', 'dirs_test', 'env_test']
REPLAY = ['catalog', 'lines', 'present', 'services', 'tasks', 'toc']
LIBRARY_SCRIPTS = ['tree_life_test', 'install_medium_test']
LAST = ['faults_test']  # takes long, and is counted apart
TARGETS = ['KWINSTUTIL', 'QTOCLIB', 'KB0CORE', 'kwbatch', 'kwmedium', 'qtoclib_test', 'catalog_replay']
LIMIT = 100  # seconds for one test program
HERE = os.path.dirname(os.path.abspath(__file__))


# ------------------------------------------------------------------------------------- mutants

def room_of(path):
    parts = path.split('/')
    return parts[0] if parts[0] in TOOL_TESTS else parts[1]


def masked(line):
    """The line with its strings, characters and comment blanked, and the spans of the strings."""
    out, spans, i = list(line), [], 0
    while i < len(line):
        c = line[i]
        if line.startswith('//', i):
            out[i:] = ' ' * (len(line) - i)
            break
        if c == '"' or (c == "'" and not (i and line[i - 1].isalnum())):
            j = i + 1
            while j < len(line) and line[j] != c:
                j += 2 if line[j] == '\\' else 1
            spans.append((i, j + 1, c))
            for k in range(i + 1, min(j, len(line))):
                out[k] = '_'
            i = j
        i += 1
    return ''.join(out), spans


def closing(text, start):
    """The place of the bracket that closes the one at `start`, or -1."""
    pairs, depth = {'(': ')', '[': ']', '{': '}'}, 0
    for i in range(start, len(text)):
        if text[i] in pairs:
            depth += 1
        elif text[i] in pairs.values():
            depth -= 1
            if depth == 0:
                return i
    return -1


def split_arguments(text):
    parts, depth, start = [], 0, 0
    for i, c in enumerate(text):
        depth += (c in '([{') - (c in ')]}')
        if c == ',' and depth == 0:
            parts.append((start, i))
            start = i + 1
    return parts + [(start, len(text))]


def may_swap(one, other):
    """Whether two arguments may have the same type, as far as one can see."""
    def kind(text):
        for name, pattern in (('number', r"-?\d.*|.*size\(\)( \+ 1)?|sizeof.*"), ('list', r'\{.*'),
                              ('text', r'".*|.*\.(c_str|data)\(\)'), ('pointer', '&.*'),
                              ('frame', 'frame|this'), ('message', 'message')):
            if re.fullmatch(pattern, text):
                return name
        return ''
    a, b = kind(one), kind(other)
    declared = r'[\w:<>*&, ]+[ *&]+\w+'
    return (one and other and not re.fullmatch(declared, one) and not re.fullmatch(declared, other)
            and 'frame' not in (a, b) and (a == b or not a or not b))


def changed_literal(line, begin, end, quote, rng):
    body = line[begin + 1:end - 1]
    if not body:
        return line[:begin] + '"x"' + line[end:] if quote == '"' else None
    free = [i for i in range(len(body))]
    for escape in re.finditer(r'\\x?[0-9A-Fa-f]+|\\.|%[-+ #0]*[\d*]*(?:\.\d+)?[hlz]*(?:\[[^]]*\]|\w|%)', body):
        free = [i for i in free if not escape.start() <= i < escape.end()]
    if not free:
        return line[:begin] + "'x'" + line[end:] if quote == "'" else None
    i = rng.choice(free)
    c = body[i]
    if c in 'zZ9':
        new = chr(ord(c) - 1)
    elif c.isalnum():
        new = chr(ord(c) + 1)
    else:
        new = '_' if c != '_' else '-'
    return line[:begin + 1] + body[:i] + new + body[i + 1:] + line[end - 1:]


STATEMENT = r'(?:(?:\+\+|--)[\w.>\[\]-]+|[\w.:>\[\]()*-]+ (?:[-+|&^]?=) .+|(?:delete(?:\[\])? )?[\w:.>-]+(?:<\w+>)?\(.*\)|delete(?:\[\])? .+)'


def mutants_of(lines, number, rng):
    """All (kind, new line) for one line."""
    line = lines[number]
    code, literals = masked(line)
    bare = code.strip()
    if (not bare or bare[0] in '#}' and len(bare) < 3 or bare.startswith('#') or
            re.match(r'(template|using|namespace|static_assert|assert|extern|class|struct|enum|public|private|protected)\b', bare)):
        return []
    found = []

    def replace(kind, begin, end, text):
        found.append((kind, line[:begin] + text + line[end:]))

    for m in re.finditer(r' (<=|>=|==|!=|<|>) ', code):
        new = {'<': '<=', '<=': '<', '>': '>=', '>=': '>', '==': '!=', '!=': '=='}[m[1]]
        replace('relation', m.start(1), m.end(1), new)
    for m in re.finditer(r'&&|\|\|', code):
        if m[0] == '||' or re.search(r'[\w)\]\'" ]$', code[:m.start()]) and ' ' in code[m.end():m.end() + 1] + ' ':
            replace('logic', m.start(), m.end(), '||' if m[0] == '&&' else '&&')
    for m in re.finditer(r'\b(?:if|while) \(', code):
        end = closing(code, m.end() - 1)
        if end > 0:
            begin = code.rfind(';', m.end(), end) + 1 or m.end()
            replace('negation', begin, end, ' !(%s)' % line[begin:end].strip() if begin != m.end()
                    else '!(%s)' % line[begin:end])
    for m in re.finditer(r'(?<![\w=!])!(?=[\w(*])', code):
        replace('negation', m.start(), m.end(), '')

    for m in re.finditer(r"(?<![\w.'])(-?)(\d[\d']*|0x[0-9A-Fa-f]+)([uUlL]*)(?![\w.])", code):
        if any(b <= m.start() < e for b, e, _ in literals):
            continue
        minus = m[1] == '-' and (
            re.search(r'\breturn *$', code[:m.start()]) or not re.search(r'[\w)\]] *$', code[:m.start()]))
        begin = m.start() if minus else m.start(2)
        octal = re.fullmatch('0[0-7]+', m[2])
        value = int(m[2].replace("'", ''), 8 if octal else 16 if m[2].startswith('0x') else 10)
        if value >= 16 and re.search(r'\w\[$', code[:begin]):
            continue  # the size of an array: one more is seldom seen
        if minus:
            new = rng.choice('01') if value == 1 else '-%d' % (value + 1)
        elif m[2].startswith('0x') or octal:
            new = '0%o' % (value + 1) if octal else hex(value + 1)
        else:
            new = {0: '1', 1: '0'}.get(value, str(value + 1))
        replace('constant', begin, m.end(2), new)
    for m in re.finditer(r'\b(true|false)\b', code):
        replace('constant', m.start(), m.end(), 'false' if m[0] == 'true' else 'true')
    for begin, end, quote in literals:
        new = changed_literal(line, begin, end, quote, rng)
        if new:
            found.append(('literal', new))

    before = next((l for l in (masked(x)[0].strip() for x in reversed(lines[:number])) if l), '')
    starts = not before or before[-1] in ';{}:>' or before.startswith('#')
    m = re.match(r'((?:\} )?(?:else )?(?:if|while|for) \()', bare)
    if m and starts:
        offset = code.index(bare)
        end = closing(code, offset + m.end() - 1)
        rest = code[end + 1:].rstrip()
        if end > 0 and re.fullmatch(r' ' + STATEMENT + ';', rest) and 'return' not in rest:
            replace('deletion', end + 1, len(code.rstrip()), ' {}')
    elif starts and re.fullmatch(STATEMENT + ';', bare) and not re.match(r'return|throw', bare):
        offset = code.index(bare)
        replace('deletion', offset, offset + len(bare), ';')

    for m in re.finditer(r'\breturn ([^;]+);', code):
        begin, end = m.start(1), m.end(1)
        value = line[begin:end]
        choice = re.fullmatch(r'(.+) \? ([^?]+) : ([^?:]+(?:::[^?:]+)*)', value)
        if value in ('true', 'false'):
            new = 'false' if value == 'true' else 'true'
        elif re.fullmatch(r'-?\d+', value):
            new = {'0': '1', '1': '0', '-1': '0'}.get(value, str(int(value) + 1))
        elif choice:
            new = '%s ? %s : %s' % (choice[1], choice[3], choice[2])
        elif re.search(r'&&|\|\||[=!<>]=| [<>] ', masked(value)[0]):
            new = '!(%s)' % value
        elif value in ('nullptr', '""', '{}', 'std::nullopt'):
            continue
        else:
            new = rng.choice(['{}', '!(%s)' % value, '(%s) + 1' % value])
        replace('return', begin, end, new)

    for i, c in enumerate(code):
        if c == '(' and re.search(r'[\w>]$', code[:i]) and not re.search(r'\b(if|while|for|switch)$', code[:i].rstrip()) or \
                c == '{' and code[:i].rstrip()[-1:] in (',', '(', '=', '{') or c == '{' and re.search(r'return $', code[:i]):
            end = closing(code, i)
            if end < 0:
                continue
            inside = code[i + 1:end]
            if ';' in inside or re.search(r'\b(const|int|char|void|bool) ', inside):
                continue
            parts = split_arguments(inside)
            for (a, b), (x, y) in zip(parts, parts[1:]):
                one, other = line[i + 1 + a:i + 1 + b], line[i + 1 + x:i + 1 + y]
                if re.search(r'(strcmp|std::min|std::max|SameText|SameFile)$', code[:i]):
                    continue  # the same either way
                if one.strip() != other.strip() and may_swap(one.strip(), other.strip()):
                    lead = one[:len(one) - len(one.lstrip())]
                    replace('swap', i + 1 + a, i + 1 + y, lead + other.strip() + ', ' + one.strip())
    return [(kind, new) for kind, new in found if new != line]


def choose(clone, seed, count):
    """For each file, in random order, (file, quota, candidates); the first that compile are used."""
    files = sorted(subprocess.run(['git', '-C', clone, 'ls-files', 'src', 'framework', 'kwbatch', 'kwmedium'],
                                  check=True, capture_output=True, text=True).stdout.split())
    sites = {}
    for path in [f for f in files if f.endswith('.cc')]:
        lines = open(os.path.join(clone, path)).read().split('\n')
        rng = random.Random('%s %s' % (seed, path))
        sites[path] = [(n, kind, new) for n in range(len(lines))
                       for kind, new in mutants_of(lines, n, rng)]
        rng.shuffle(sites[path])
    sizes = [len({n for n, _, _ in found}) for found in sites.values()]
    quotas = collections.Counter(random.Random(seed).choices(list(sites), sizes, k=count))
    order = sorted(quotas)
    random.Random(seed).shuffle(order)
    return [(path, quotas[path], sites[path]) for path in order]


# --------------------------------------------------------------------------------------- tests

class Bench:
    def __init__(self, clone):
        self.clone = os.path.abspath(clone)
        self.build = self.clone + '/build/mut'

    def configure(self):
        if not os.path.exists(self.build + '/build.ninja'):
            subprocess.run(['cmake', '-S', self.clone, '-B', self.build, '-G', 'Ninja',
                            '-DCMAKE_BUILD_TYPE=Debug', '-DCMAKE_CXX_FLAGS=-O0 -g0 -w',
                            '-DCMAKE_LINK_DEPENDS_NO_SHARED=ON'], check=True, stdout=subprocess.DEVNULL)
        subprocess.run(['ninja', '-j1', '-C', self.build], check=True, stdout=subprocess.DEVNULL)
        subprocess.run(['gcc', '-shared', '-fPIC', '-xc', '-', '-o', self.build + '/nosleep.so'], check=True,
                       input=b'#include <unistd.h>\nunsigned sleep(unsigned s) { usleep(20000); return 0; }')

    def make(self):
        return subprocess.run(['ninja', '-j1', '-C', self.build] + TARGETS, capture_output=True,
                              text=True, errors='replace').returncode == 0

    def write(self, path, content):
        with open(os.path.join(self.clone, path), 'w') as file:
            file.write(content)

    def command(self, test):
        if test in REPLAY:
            return [self.build + '/fuzz/%s_replay' % test, self.clone + '/fuzz/corpus/' + test]
        if os.path.exists(self.clone + '/tests/%s.sh' % test):
            return ['bash', self.clone + '/tests/%s.sh' % test, self.build, self.clone]
        # What asks a java takes a second each time; only dirs_test looks at that second.
        hasty = ['env', 'LD_PRELOAD=%s/nosleep.so' % self.build] if test == 'env_test' else []
        return hasty + [self.build + '/tests/' + test]

    def run(self, tests, stop, *options):
        """Runs tests in one sandbox, with nothing left of one for the next; until the first failure
        when told to `stop`. Yields (test, status, output); 124 and 137 for a time-out."""
        script = ['cd /tmp']
        kept = [self.clone.split('/')[2], '.changed', '.work']  # what sandbox.sh has put there
        for test in tests:
            extra = options if test.endswith('_test') and self.command(test)[0] != 'bash' else ()
            script += ['mkdir -p cwd; cd cwd',
                       shlex.join(['timeout', '-k', '2', str(LIMIT)] + self.command(test) + list(extra))
                       + ' </dev/null; rc=$?; kill -9 -1 2>/dev/null', 'cd /tmp',
                       shlex.join(['find', '.', '-mindepth', '1', '-maxdepth', '1']
                                  + [word for name in kept for word in ('!', '-name', name)]
                                  + ['-exec', 'rm', '-rf', '{}', '+']),
                       # 77 is the status of a script that is skipped.
                       'printf "\\n@@@ %s\\n" $((rc == 77 ? 0 : rc))',
                       '((rc == 0 || rc == 77)) || exit' if stop else '']
        environment = dict(os.environ, CPU_LIMIT='60' if tests == LAST else '12')
        done = subprocess.run(['timeout', '-k', '2', str(LIMIT * 5), HERE + '/sandbox.sh', self.clone,
                               'bash', '-c', '\n'.join(script)], stdin=subprocess.DEVNULL, env=environment,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        parts = re.split(r'\n@@@ (\d+)\n', done.stdout.decode('utf-8', 'replace'))
        for i, test in enumerate(tests):
            # Without its status, the mutant ended the sandbox itself.
            status = int(parts[2 * i + 1]) if 2 * i + 1 < len(parts) else 137
            yield test, status, parts[2 * i]
            if 2 * i + 1 >= len(parts) or stop and status != 0:
                return

    def judge(self, room):
        if room in TOOL_TESTS:
            stages = [TOOL_TESTS[room]]
        else:
            own = ROOM_TESTS.get(room, [])
            stages = [own, [t for t in UNIT if t not in own] + REPLAY, LIBRARY_SCRIPTS, LAST]
        for stage in stages:
            for test, status, output in self.run(stage, True, '--gtest_brief=1', '--gtest_fail_fast'):
                if status == 0:
                    continue
                case = re.search(r'^\[  FAILED  \] ([\w./]+)', output, re.M)
                return 'killed', test + ('.' + case[1] if case else '') + (
                    ' (time)' if status in (124, 137) else '')
        return 'survived', ''


def show(result):
    return '%s %s:%d [%s]\n    - %s\n    + %s' % (
        result['verdict'].upper(), result['file'], result['line'], result['kind'],
        result['old'].strip(), result['new'].strip())


def main():
    arguments = sys.argv[1:]
    if len(arguments) < 3:
        sys.exit(__doc__)
    bench = Bench(arguments[0])
    if arguments[1] == '--list':
        for path, quota, candidates in choose(bench.clone, arguments[2], int(arguments[3])):
            print(path, quota, len(candidates))
            for n, kind, new in candidates[:quota]:
                print('   %4d %-9s %s' % (n + 1, kind, new.strip()))
        return
    bench.configure()
    if arguments[1] in ('--one', '--again'):
        if arguments[1] == '--one':
            mutants = [(arguments[2], int(arguments[3]), arguments[4])]
        else:
            store = os.path.join(bench.clone, '..', 'results-%s.jsonl' % arguments[2])
            mutants = [(r['file'], r['line'], r['new']) for r in map(json.loads, open(store))
                       if r['verdict'] == 'survived']
        for path, number, new in mutants:
            original = open(os.path.join(bench.clone, path)).read()
            lines = original.split('\n')
            lines[number - 1] = new
            try:
                bench.write(path, '\n'.join(lines))
                print('%s:%d %s' % (path, number, new.strip()), bench.judge(room_of(path))
                      if bench.make() else 'does not compile', flush=True)
            finally:
                bench.write(path, original)
        bench.make()
        return

    seed, count = arguments[1], int(arguments[2])
    deadline = time.time() + 60 * (float(arguments[3]) if len(arguments) > 3 else 75)
    for room in ['', *TOOL_TESTS]:
        verdict, by = bench.judge(room)
        if verdict != 'survived':
            sys.exit('Without a mutation already fails: ' + by)
    store = os.path.join(bench.clone, '..', 'results-%s.jsonl' % seed)
    results = [json.loads(l) for l in open(store)] if os.path.exists(store) else []
    finished = collections.Counter(r['file'] for r in results)
    kinds = collections.Counter(r['kind'] for r in results if r['verdict'] != 'invalid')
    for path, quota, candidates in choose(bench.clone, seed, count):
        if finished[path]:
            continue  # by an earlier run: a file is done as a whole
        original = open(os.path.join(bench.clone, path)).read()
        lines = original.split('\n')
        mine, used = [], set()
        candidates = candidates[:]
        try:
            while len(mine) < quota and candidates and time.time() < deadline:
                # The kind that is rarest so far, on a line that has no mutant yet.
                pick = min(candidates, key=lambda c: (c[0] in used, kinds[c[1]]))
                candidates.remove(pick)
                number, kind, new = pick
                if number in used and len(used) * 2 < len({c[0] for c in candidates} | used):
                    continue
                bench.write(path, '\n'.join(lines[:number] + [new] + lines[number + 1:]))
                if not bench.make():
                    continue
                used.add(number)
                kinds[kind] += 1
                verdict, by = bench.judge(room_of(path))
                mine.append({'file': path, 'line': number + 1, 'kind': kind, 'old': lines[number],
                             'new': new, 'verdict': verdict, 'by': by})
                if verdict == 'survived':
                    print(show(mine[-1]), flush=True)
        finally:
            bench.write(path, original)
        with open(store, 'a') as file:
            for result in mine:
                file.write(json.dumps(result) + '\n')
        results += mine
        if time.time() >= deadline:
            break
    bench.make()
    rooms = collections.defaultdict(lambda: [0, 0])
    for result in results:
        rooms[room_of(result['file'])][0] += 1
        rooms[room_of(result['file'])][1] += result['verdict'] == 'killed'
    for room, (total, killed) in sorted(rooms.items()):
        print('%-10s %3d mutants, %3d killed' % (room, total, killed))
    killed = sum(r['verdict'] == 'killed' for r in results)
    print('%d of them by faults_test alone' % sum(r['by'].startswith('faults_test') for r in results))
    print('%d mutants, %d killed: %.1f %%' % (len(results), killed, 100 * killed / max(len(results), 1)))


if __name__ == '__main__':
    main()
