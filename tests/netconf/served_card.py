"""A card that gponval serves for a test, and clients that speak to it byte by byte."""

import os
import re
import select
import shutil
import signal
import socket
import subprocess
import tempfile
import time

BASE = "urn:ietf:params:xml:ns:netconf:base:1.0"
CHUNKED = "urn:ietf:params:netconf:base:1.1"
# For what takes an instant on a machine that nobody else uses.
PATIENCE = 60


def hello(capability=CHUNKED):
    return (f'<hello xmlns="{BASE}"><capabilities><capability>{capability}</capability>'
            "</capabilities></hello>]]>]]>").encode()


def chunked(message):
    text = message.encode()
    return b"\n#%d\n" % len(text) + text + b"\n##\n"


def rpc(operation, number=1):
    return f'<rpc xmlns="{BASE}" message-id="{number}">{operation}</rpc>'


def config(content):
    return f'<config xmlns="urn:tarnd:base" xmlns:nc="{BASE}">{content}</config>'


def edit(content):
    return ("<edit-config><target><candidate/></target><config>" + config(content) +
            "</config></edit-config>")


def get_config(datastore="running", content=None):
    selected = "" if content is None else f"<filter>{config(content)}</filter>"
    return f"<get-config><source><{datastore}/></source>{selected}</get-config>"


def get_by_xpath(expression):
    return ("<get-config><source><running/></source><filter type='xpath' xmlns:t='urn:tarnd:base' "
            f'select="{expression}"/></get-config>')


def free_port():
    with socket.socket() as any_port:
        any_port.bind(("127.0.0.1", 0))
        return any_port.getsockname()[1]


def wait_for(condition, what):
    deadline = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError(f"waited {PATIENCE} s in vain until {what}")
        time.sleep(0.02)


def state_and_parent(process):
    """A process that does not exist is as one that has ended."""
    try:
        with open(f"/proc/{process}/stat", encoding="utf-8", errors="replace") as fields:
            state, parent = fields.read().rpartition(")")[2].split()[:2]
            return state, int(parent)
    except (FileNotFoundError, ProcessLookupError):
        return "Z", 0


def runs(process):
    return state_and_parent(process)[0] != "Z"


def children_of(process):
    """The processes that it started and that have not ended."""
    return [int(name) for name in filter(str.isdigit, os.listdir("/proc"))
            if state_and_parent(name)[1] == process and runs(name)]


class ServedCard:
    """gponval serve with a generated card, in a folder of its own."""

    def __init__(self, gponval, *options, ports=8, starts=True):
        self.gponval = gponval
        self.prefix = []  # what runs the command
        self.process = None
        self.folder = tempfile.mkdtemp(prefix="gponval-netconf-")
        os.chmod(self.folder, 0o755)
        self.card = self.file("card.xml", subprocess.run(
            [gponval, "generate", "--links", "1", "--onus", "4", "--service-ports", str(ports)],
            check=True, stdout=subprocess.PIPE).stdout)
        self.socket = os.path.join(self.folder, "card.socket")
        self.log = os.path.join(self.folder, "log")
        self.state = os.path.join(self.folder, "state")
        if starts:
            self.start(*options)

    def file(self, name, content):
        path = os.path.join(self.folder, name)
        with open(path, "wb") as out:
            out.write(content if isinstance(content, bytes) else content.encode())
        return path

    def start(self, *options):
        if "--hello-timeout" not in options:
            options += ("--hello-timeout", "600")  # no test fails for a slow machine
        with open(self.log, "ab") as log:
            self.process = subprocess.Popen(
                [*self.prefix, self.gponval, "serve", "--running", self.card, "--socket",
                 self.socket, *options],
                stdout=subprocess.PIPE, stderr=log,
                env=dict(os.environ, XDG_STATE_HOME=self.state))
        self.greeting = self.process.stdout.readline().decode()
        if "Serving NETCONF" not in self.greeting:
            self.stop()
            raise AssertionError("the server did not start: " + self.log_text())

    def log_text(self):
        with open(self.log, encoding="utf-8") as log:
            return log.read()

    def stop(self):
        """Returns the server's exit status."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        status = self.process.wait(PATIENCE)
        self.process.stdout.close()
        return status

    def close(self):
        if self.process is not None:
            self.stop()
        shutil.rmtree(self.folder)

    def commit(self, content):
        """What gponval commit says of the change: its JSON."""
        change = self.file("change.xml", config(content))
        return subprocess.run(
            [self.gponval, "commit", "--running", self.card, "--change", change, "--all",
             "--format", "json"], check=False, stdout=subprocess.PIPE).stdout


class Client:
    """A client at the UNIX socket that uses chunks."""

    def __init__(self, card, say_hello=True):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(PATIENCE)
        self.received = b""
        try:
            self.socket.connect(card.socket)
            self.hello = self.until(b"]]>]]>").decode()
            self.session_id = re.search("<session-id>([0-9]+)<", self.hello)[1]
            if say_hello:
                self.send(hello())
        except BaseException:
            self.close()
            raise

    def send(self, text):
        self.socket.sendall(text)

    def until(self, end):
        while end not in self.received:
            piece = self.socket.recv(1 << 16)
            if not piece:
                raise EOFError(self.received)
            self.received += piece
        text, _, self.received = self.received.partition(end)
        return text

    def reply(self):
        return self.until(b"\n##\n").split(b"\n", 2)[2].decode()

    def ask(self, operation):
        self.send(chunked(rpc(operation)))
        return self.reply()

    def is_closed(self):
        """Reads up to the end; False if nothing ends the connection."""
        try:
            while self.socket.recv(1 << 16):
                pass
        except ConnectionResetError:
            pass
        except socket.timeout:
            return False
        return True

    def has_input(self):
        return bool(select.select([self.socket], [], [], 0)[0])

    def close(self):
        self.socket.close()
