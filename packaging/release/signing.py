"""Signs executables and installer packages with a key or token of the caller's."""
import pathlib
import subprocess


class Failed(Exception):
    """The signing tool refused; what it said is the text."""


def add_options(parser):
    group = parser.add_argument_group(
        "signing", "nothing is signed without one of: --sign-cert and --sign-key, --pkcs12, or"
        " --pkcs11-module with --sign-cert and --pkcs11-key")
    group.add_argument("--sign-cert", metavar="FILE", help="the certificate, with its chain, PEM")
    group.add_argument("--sign-key", metavar="FILE", help="its key, PEM")
    group.add_argument("--pkcs12", metavar="FILE", help="certificate and key in one file")
    group.add_argument("--pkcs11-module", metavar="FILE", help="the library of a token")
    group.add_argument("--pkcs11-engine", metavar="FILE",
                       help="OpenSSL's engine for tokens, where it is not found by itself")
    group.add_argument("--pkcs11-key", metavar="ID", help="the key on the token")
    group.add_argument("--sign-password-file", metavar="FILE",
                       help="the password of key, file or token")
    group.add_argument("--sign-ca", metavar="FILE",
                       help="the authority; every signature is then verified against it")
    group.add_argument("--timestamp-url", metavar="URL",
                       help="a time-stamp service (RFC 3161): the one thing for which a release"
                            " uses the network")


def complaint(options):
    """What is wrong with the options, or None."""
    ways = {"--sign-key": options.sign_key, "--pkcs12": options.pkcs12,
            "--pkcs11-module": options.pkcs11_module}
    chosen = [name for name, value in ways.items() if value]
    if len(chosen) > 1:
        return f"{chosen[0]} and {chosen[1]} exclude each other"
    for name in ("sign_cert", "sign_key", "pkcs12", "pkcs11_module", "pkcs11_engine",
                 "sign_password_file", "sign_ca"):
        value = getattr(options, name)
        if value and not pathlib.Path(value).is_file():
            return f"--{name.replace('_', '-')}: there is no file {value}"
    if chosen in (["--sign-key"], ["--pkcs11-module"]) and not options.sign_cert:
        return f"{chosen[0]} needs --sign-cert"
    if bool(options.pkcs11_key) != bool(options.pkcs11_module):
        return "--pkcs11-module and --pkcs11-key need each other"
    if not chosen:
        for name in ("sign_cert", "pkcs11_engine", "sign_password_file", "sign_ca",
                     "timestamp_url"):
            if getattr(options, name):
                return f"--{name.replace('_', '-')} is given, but no key"
    return None


def key_arguments(options):
    if options.pkcs12:
        arguments = ["-pkcs12", options.pkcs12]
    elif options.pkcs11_module:
        arguments = ["-pkcs11module", options.pkcs11_module, "-certs", options.sign_cert,
                     "-key", options.pkcs11_key]
        if options.pkcs11_engine:
            arguments = ["-pkcs11engine", options.pkcs11_engine, *arguments]
    else:
        arguments = ["-certs", options.sign_cert, "-key", options.sign_key]
    if options.sign_password_file:
        arguments += ["-readpass", options.sign_password_file]
    return arguments


def wanted(options):
    return bool(options.sign_key or options.pkcs12 or options.pkcs11_module)


def run(*arguments):
    done = subprocess.run(["osslsigncode", *map(str, arguments)], check=False, text=True,
                          capture_output=True, stdin=subprocess.DEVNULL)
    if done.returncode != 0:
        raise Failed((done.stdout + done.stderr).strip())


def sign(file, description, options):
    """Replaces the file by the signed one."""
    signed = file.with_name(file.name + ".signed")
    arguments = ["sign", *key_arguments(options), "-h", "sha256", "-n", description]
    if options.timestamp_url:
        arguments += ["-ts", options.timestamp_url]
    if file.suffix == ".msi":
        # Covers the package's streams with their names and dates.
        arguments.append("-add-msi-dse")
    run(*arguments, "-in", file, "-out", signed)
    if options.sign_ca:
        verify(signed, options.sign_ca)
    signed.replace(file)


def verify(file, authority):
    run("verify", "-CAfile", authority, "-TSA-CAfile", authority, "-in", file)
