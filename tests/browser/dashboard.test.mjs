// The sandbox's dashboard in headless Chromium, driven over the DevTools
// protocol: a collection appears live, a section's table matches the dataset,
// a corrupted upload's problem is highlighted. With TAVRIN_SCREENSHOT set to a
// file, the accepted upload's page is saved there (make screenshot).
// Exits 77 (skipped) when Chromium or the pinned npm packages are missing,
// unless TAVRIN_REQUIRE_BROWSER is set.
import { execFileSync, spawn } from 'node:child_process';
import { X509Certificate, createHash } from 'node:crypto';
import { existsSync, mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { request } from 'node:https';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { deflateRawSync } from 'node:zlib';
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';

const browserPath = process.env.TAVRIN_CHROMIUM ?? '/usr/bin/chromium';
const tool = process.env.TAVRIN_TOOL;
const source = process.env.TAVRIN_SOURCE_DIR ?? '.';
const profile = join(source, 'examples/profiles/iphone-realistic.json');
// puppeteer-core, as scripts/install-browser-tests.sh installed it.
let puppeteer = null;
try {
  puppeteer = createRequire(join(source, 'scripts/browser-tests/'))('puppeteer-core');
} catch {}
if (!puppeteer || !existsSync(browserPath) || !tool) {
  console.log('skipped: needs Chromium, scripts/browser-tests/node_modules and TAVRIN_TOOL');
  process.exit(process.env.TAVRIN_REQUIRE_BROWSER ? 1 : 77);
}

const directory = mkdtempSync(join(tmpdir(), 'tavrin-dashboard-'));
const database = join(directory, 'uploads.db');
let sandbox, browser, page, clientOptions, port, authority;

// Runs the tool to its end and returns its standard output.
const run = (...args) => execFileSync(tool, args, { encoding: 'utf8', stdio: ['ignore', 'pipe', 'pipe'] });

// One request to the sandbox, trusting only its CA.
function post(path, body, token) {
  return new Promise((resolve, reject) => {
    const text = JSON.stringify(body);
    const headers = { 'Content-Type': 'application/json', 'Content-Length': Buffer.byteLength(text) };
    if (token) headers.Authorization = `Bearer ${token}`;
    const call = request({ host: '127.0.0.1', port, path, method: 'POST', ca: authority, servername: 'api.tavrin.com', headers },
      (response) => {
        let answer = '';
        response.on('data', (chunk) => { answer += chunk; });
        response.on('end', () => resolve({ status: response.statusCode, body: JSON.parse(answer) }));
      });
    call.on('error', reject);
    call.end(text);
  });
}

// The cells of the dashboard's section table, as the page shows them.
const tableCells = () => page.$$eval('#rows tbody tr', (rows) => rows.map((row) => [...row.cells].slice(1).map((c) => c.textContent)));

before(async () => {
  sandbox = spawn(tool, ['sandbox', '--db', database, '--cert-dir', directory], { stdio: ['ignore', 'pipe', 'ignore'] });
  const [line] = await new Promise((resolve) => createInterface({ input: sandbox.stdout }).once('line', (l) => resolve([l])));
  clientOptions = line.replace('sandbox ready: ', '').split(' ');
  const url = clientOptions[1];
  port = Number(new URL(url).port);
  authority = readFileSync(join(directory, 'ca.pem'));
  // Chromium trusts the sandbox's certificate by its public key, and nothing else.
  const certificate = new X509Certificate(readFileSync(join(directory, 'server.pem')));
  const spki = createHash('sha256').update(certificate.publicKey.export({ type: 'spki', format: 'der' })).digest('base64');
  browser = await puppeteer.launch({
    executablePath: browserPath,
    headless: true,
    userDataDir: join(directory, 'chromium'),
    args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
      '--disable-component-update', '--disable-sync', `--ignore-certificate-errors-spki-list=${spki}`,
      `--host-resolver-rules=MAP api.tavrin.com 127.0.0.1`, '--window-size=1400,900'],
    defaultViewport: { width: 1400, height: 900 },
  });
  page = await browser.newPage();
  await page.goto(`${url}/`);
  await page.waitForSelector('#status.live');
});

after(async () => {
  await browser?.close();
  sandbox?.kill('SIGTERM');
  rmSync(directory, { recursive: true, force: true });
});

test('a collection appears live, and its section table matches the dataset', async () => {
  assert.equal(await page.$$eval('#uploads tbody tr', (rows) => rows.length), 0);
  run('collect', '--quiet', '--key', 'sandbox-key', '--record', 'order-1', '--profile', profile, ...clientOptions);
  
  await page.waitForSelector('#uploads tbody tr[data-id="1"]');
  const cells = await page.$eval('#uploads tbody tr', (row) => [...row.cells].map((c) => c.textContent));
  assert.equal(cells[1], 'order-1');
  assert.equal(cells[6], 'accepted');
  assert.equal(await page.$eval('#exchanges tbody', (body) => body.rows[0].cells[2].textContent), 'upload');

  await page.click('#uploads tbody tr[data-id="1"]');
  await page.waitForSelector('#sections li[data-position="8"]'); 
  const dataset = JSON.parse(run('inspect', '--db', database, '--record', 'order-1', '--json'));
  await page.click('#sections li[data-position="8"]');
  await page.waitForFunction(() => document.querySelector('#section-title').textContent.startsWith('Calendars'));
  const calendars = dataset[7].Calendars;
  const shown = (value) => (value === null ? 'null' : typeof value === 'string' ? value : JSON.stringify(value));
  assert.deepEqual(await tableCells(), calendars.map((row) => row.map(shown)));
  const header = await page.$$eval('#rows thead th', (cells) => cells.map((c) => c.textContent));
  assert.equal(header[1], '1 calendarIdentifier');
  assert.equal(header.length, 1 + calendars[0].length);
  if (process.env.TAVRIN_SCREENSHOT) {
    await page.click('#sections li[data-position="2"]');
    await page.waitForFunction(() => document.querySelector('#section-title').textContent.startsWith('Contacts'));
    await page.screenshot({ path: process.env.TAVRIN_SCREENSHOT });
  }
});

test('a corrupted upload shows its problem in place', async () => {
  await page.goto(`${clientOptions[1]}/#/`);
  await page.waitForSelector('#status.live');
  const dataset = JSON.parse(run('inspect', '--db', database, '--record', 'order-1', '--json'));
  dataset[1].Contacts[1][4] = 1;  // a presence flag sent as a number
  const data = deflateRawSync(Buffer.from(JSON.stringify(dataset))).toString('base64');
  const token = (await post('/v4.0/account/tavrinLogin', { authKey: 'sandbox-key' })).body.access_token;
  const refused = await post('/v4.0/datasets/upload', { recordNumber: 'broken-1', data }, token);
  assert.equal(refused.status, 400);

  await page.waitForSelector('#uploads tbody tr[data-id="2"]');
  await page.click('#uploads tbody tr[data-id="2"]');
  await page.waitForSelector('#rows td.problem');
  assert.equal(await page.$eval('#sections li.problem', (item) => item.firstChild.textContent), 'Contacts');
  assert.match(await page.$eval('#problem', (box) => box.textContent), /section Contacts, row 2, position 5.*expected boolean, got number 1/);
  const marked = await page.$eval('#rows td.problem', (cell) => [cell.parentElement.cells[0].textContent, cell.cellIndex, cell.textContent]);
  assert.deepEqual(marked, ['2', 5, '1']);
});
